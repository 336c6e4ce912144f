// The built libraries through their public interface: memory that runs out and callbacks that
// throw, with a host that goes on whatever the entries answer.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>

#include "reference_engine/engine_status.h"
#include "reference_engine/test_engine_host.h"
#include "reference_engine/test_failing_memory.h"

namespace zr7700::reference_engine::testing {
namespace {

constexpr long kNever = std::numeric_limits<long>::max();

// Takes the stream and throws from inside the `throws_at`-th block (from 1) on, for `throws`
// blocks.
struct Receiver {
  static void Take(void* context, uint8_t* data, uint32_t length_bytes) {
    auto* const receiver = static_cast<Receiver*>(context);
    receiver->stream.insert(receiver->stream.end(), data, data + length_bytes);
    const long block = ++receiver->blocks;
    if (block >= receiver->throws_at && block < receiver->throws_at + receiver->throws) throw block;
  }
  std::vector<uint8_t> stream;
  long blocks = 0;
  long throws_at = kNever;
  long throws = 0;
};

// What the calls of a page answered, from HPEStartPage to HPEEndDoc.
struct Answers {
  int Count(int32_t status) const { return static_cast<int>(std::ranges::count(all, status)); }
  bool AllOk() const { return Count(kOk) == static_cast<int>(all.size()); }
  std::vector<int32_t> all;
};

class EngineFailureTest : public ::testing::TestWithParam<FamilyName> {
 protected:
  EngineFailureTest() : host_(GetParam()), calls_(host_.entries()), handle_(host_.handle()) {
    // Memory for the host's own part, so that only the engine's may lack.
    receiver_.stream.reserve(8 << 20);
    answers_.all.reserve(picture_.height + 3);
  }

  void OpenDocument() {
    const std::string table = StandardTable(GetParam());
    receiver_.stream.clear();
    receiver_.blocks = 0;
    ASSERT_EQ(calls_.HPEStartDoc(handle_, Receiver::Take, table.c_str(), 0, 0, 142, &receiver_),
              kOk);
    const auto width = static_cast<int32_t>(picture_.width);
    ASSERT_EQ(host_.SetProperties({}, width, static_cast<int32_t>(picture_.height)), kOk);
  }
  // A page and the document's end, as the filter does it.
  void PrintPage() {
    answers_.all.clear();
    answers_.all.push_back(calls_.HPEStartPage(handle_));
    for (uint32_t y = 0; y < picture_.height; ++y)
      answers_.all.push_back(calls_.HPESendBand(handle_, 0, y, 1, picture_.width,
                                                picture_.width * 4, picture_.pixel(0, y)));
    answers_.all.push_back(calls_.HPEEndPage(handle_, 0));
    answers_.all.push_back(calls_.HPEEndDoc(handle_, 0));
  }
  int32_t start_page() const { return answers_.all[0]; }
  int32_t end_page() const { return answers_.all[answers_.all.size() - 2]; }
  int32_t end_document() const { return answers_.all.back(); }

  // The pages of the stream; a test failure when it is not legal.
  std::vector<PrintedPage> Pages() {
    TestPrinter printer;
    EXPECT_TRUE(printer.Print(receiver_.stream)) << printer.error();
    return printer.documents().empty() ? std::vector<PrintedPage>()
                                       : printer.documents().front().pages;
  }

  EngineHost host_;
  const EntryTable& calls_;
  HPEHandle handle_;
  const Picture picture_ = NoisePicture(600, 250);
  Receiver receiver_;
  Answers answers_;
};

INSTANTIATE_TEST_SUITE_P(Families, EngineFailureTest, ::testing::Values(kHeronName, kGraniteName));

TEST_P(EngineFailureTest, APageThatLacksMemoryAnywhereIsGivenUp) {
  ASSERT_EQ(host_.Initialize(), kOk);
  long failures = 0;
  int spoilt_at_line = 0;
  for (bool failed = true; failed; failures += failed) {
    // A screen of its own for every page.
    host_.WriteIni(IniText(1 + static_cast<int>(failures % 2), 4, 0));
    OpenDocument();
    {
      const FailingAllocation failing(failures + 1);
      PrintPage();
      failed = failing.happened();
    }
    const std::vector<PrintedPage> pages = Pages();
    if (!failed) {
      EXPECT_TRUE(answers_.AllOk());
      ASSERT_EQ(pages.size(), 1U);
      EXPECT_FALSE(pages[0].aborted);
      continue;
    }
    SCOPED_TRACE(failures + 1);
    EXPECT_EQ(answers_.Count(kNoMemory), 1);
    EXPECT_EQ(end_document(), kOk);
    if (start_page() == kNoMemory) {
      EXPECT_TRUE(receiver_.stream.empty());
      EXPECT_EQ(end_page(), kWrongOrder);
      continue;
    }
    ASSERT_EQ(pages.size(), 1U);
    EXPECT_TRUE(pages[0].aborted);
    if (end_page() == kNoMemory) continue;
    // No line after the first refused one is taken.
    ++spoilt_at_line;
    const auto refused = std::ranges::find(answers_.all, int32_t{kNoMemory});
    ASSERT_NE(refused, answers_.all.end());
    EXPECT_EQ(std::count(refused + 1, answers_.all.end() - 1, int32_t{kPageSpoilt}),
              answers_.all.end() - refused - 2);
  }
  EXPECT_GT(spoilt_at_line, 10);
}

TEST_P(EngineFailureTest, AfterALackOfMemoryTheNextPageIsWhole) {
  ASSERT_EQ(host_.Initialize(), kOk);
  OpenDocument();
  PrintPage();
  const std::vector<uint8_t> whole = receiver_.stream;
  OpenDocument();
  {
    const FailingAllocation failing(50);
    PrintPage();
    ASSERT_TRUE(failing.happened());
  }
  EXPECT_NE(receiver_.stream, whole);
  OpenDocument();
  PrintPage();
  EXPECT_EQ(receiver_.stream, whole);
}

TEST_P(EngineFailureTest, ADocumentThatLacksMemoryCanBeOpenedAgain) {
  const std::string table = StandardTable(GetParam());
  int failures = 0;
  for (bool failed = true; failed; failures += failed) {
    EngineHost host(GetParam());
    ASSERT_EQ(host.Initialize(), kOk);
    const auto start = [&] {
      return host.entries().HPEStartDoc(host.handle(), Receiver::Take, table.c_str(), 0, 0, 142,
                                        &receiver_);
    };
    int32_t answer = kOk;
    {
      const FailingAllocation failing(failures + 1);
      answer = start();
      failed = failing.happened();
    }
    EXPECT_EQ(answer, failed ? kNoMemory : kOk) << failures;
    EXPECT_EQ(start(), failed ? kOk : kWrongOrder) << failures;
  }
  EXPECT_GT(failures, 1);
}

TEST_P(EngineFailureTest, AnInstanceThatLacksMemoryIsNotMade) {
  const FailingAllocation failing(1);
  EXPECT_EQ(calls_.CreateHostPrintEngine(), nullptr);
}

TEST_P(EngineFailureTest, APageWhoseCallbackThrowsIsGivenUpOrWhole) {
  ASSERT_EQ(host_.Initialize(), kOk);
  OpenDocument();
  PrintPage();
  const std::vector<PrintedPage> whole = Pages();
  ASSERT_TRUE(answers_.AllOk());
  const long blocks = receiver_.blocks;
  ASSERT_GT(blocks, 5);
  int given_up = 0;
  for (receiver_.throws_at = 1; receiver_.throws_at <= blocks; ++receiver_.throws_at) {
    SCOPED_TRACE(receiver_.throws_at);
    receiver_.throws = 1;
    OpenDocument();
    PrintPage();
    EXPECT_EQ(answers_.Count(kCallbackFailed), 1);
    const std::vector<PrintedPage> pages = Pages();
    ASSERT_EQ(pages.size(), 1U);
    given_up += pages[0].aborted;
    if (!pages[0].aborted) {
      EXPECT_EQ(pages[0].drops, whole[0].drops);
    }
  }
  // Only the blocks of page-end and document-end come when the page is whole.
  EXPECT_EQ(given_up, blocks - 2);
}

TEST_P(EngineFailureTest, ACallbackMayThrowAtEveryCall) {
  ASSERT_EQ(host_.Initialize(), kOk);
  receiver_.throws_at = 1;
  receiver_.throws = kNever - 1;
  OpenDocument();
  answers_.all.assign({calls_.HPEStartPage(handle_), calls_.HPEEndPage(handle_, 0)});
  EXPECT_EQ(answers_.all, (std::vector<int32_t>{kCallbackFailed, kCallbackFailed}));
  // The feed has gone as well by now, so this one closes the page.
  EXPECT_EQ(calls_.HPEEndDoc(handle_, 0), kCallbackFailed);
  EXPECT_EQ(calls_.HPEEndDoc(handle_, 0), kWrongOrder);
  const std::vector<PrintedPage> pages = Pages();
  ASSERT_EQ(pages.size(), 1U);
  EXPECT_TRUE(pages[0].aborted);
  receiver_ = {};
  OpenDocument();
  PrintPage();
  EXPECT_TRUE(answers_.AllOk());
}

TEST_P(EngineFailureTest, AGivenUpPageMakesRoomForTheNext) {
  ASSERT_EQ(host_.Initialize(), kOk);
  receiver_.throws_at = 2;
  receiver_.throws = 1;
  OpenDocument();
  EXPECT_EQ(calls_.HPEStartPage(handle_), kCallbackFailed);
  EXPECT_EQ(calls_.HPEStartPage(handle_), kWrongOrder);
  EXPECT_EQ(calls_.HPEEndPage(handle_, 0), kPageSpoilt);
  EXPECT_EQ(calls_.HPEEndPage(handle_, 0), kWrongOrder);
  PrintPage();
  EXPECT_TRUE(answers_.AllOk());
  const std::vector<PrintedPage> pages = Pages();
  ASSERT_EQ(pages.size(), 2U);
  EXPECT_TRUE(pages[0].aborted);
  EXPECT_FALSE(pages[1].aborted);
  EXPECT_EQ(pages[1].start.number, 2U);
}

}  // namespace
}  // namespace zr7700::reference_engine::testing
