// The built libraries through their public interface: several pages and documents of one instance.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "reference_engine/engine_status.h"
#include "reference_engine/test_engine_host.h"

namespace zr7700::reference_engine::testing {
namespace {

class EngineDocumentTest : public ::testing::TestWithParam<FamilyName> {
 protected:
  EngineDocumentTest() : host_(GetParam()), calls_(host_.entries()), handle_(host_.handle()) {}

  void OpenDocument() { ASSERT_EQ(host_.StartDocument(StandardTable(GetParam())), kOk); }
  void SetUpPage(uint32_t width, uint32_t height) {
    Job job;
    job.sharpening = 12;
    ASSERT_EQ(host_.SetProperties(job, static_cast<int32_t>(width), static_cast<int32_t>(height)),
              kOk);
  }
  int32_t SendLine(const Picture& picture, uint32_t y) {
    return calls_.HPESendBand(handle_, 0, y, 1, picture.width, picture.width * 4,
                              picture.pixel(0, y));
  }
  void PrintPage(const Picture& picture) {
    SetUpPage(picture.width, picture.height);
    ASSERT_EQ(calls_.HPEStartPage(handle_), kOk);
    ASSERT_EQ(host_.SendLines(picture), kOk);
    ASSERT_EQ(calls_.HPEEndPage(handle_, 0), kOk);
  }
  // The documents sent so far; a test failure when the stream is not legal.
  std::vector<PrintedDocument> Documents() {
    TestPrinter printer;
    const std::vector<uint8_t> stream = host_.Stream();
    EXPECT_TRUE(printer.Print(stream)) << printer.error();
    return printer.documents();
  }

  EngineHost host_;
  const EntryTable& calls_;
  HPEHandle handle_;
};

INSTANTIATE_TEST_SUITE_P(Families, EngineDocumentTest, ::testing::Values(kHeronName, kGraniteName));

TEST_P(EngineDocumentTest, EveryPageBeginsWithItsFirstLine) {
  ASSERT_EQ(host_.Initialize(), kOk);
  OpenDocument();
  const Picture picture = NoisePicture(40, 30);
  PrintPage(picture);
  PrintPage(picture);
  ASSERT_EQ(calls_.HPEEndDoc(handle_, 0), kOk);
  const auto documents = Documents();
  ASSERT_EQ(documents.size(), 1U);
  ASSERT_EQ(documents[0].pages.size(), 2U);
  EXPECT_GT(documents[0].pages[0].DropCount(0), 0U);
  EXPECT_EQ(documents[0].pages[1].drops, documents[0].pages[0].drops);
}

TEST_P(EngineDocumentTest, EveryDocumentBeginsAfresh) {
  ASSERT_EQ(host_.Initialize(), kOk);
  for (int i = 0; i < 2; ++i) {
    OpenDocument();
    PrintPage(NoisePicture(20, 20));
    ASSERT_EQ(calls_.HPEEndDoc(handle_, 0), kOk);
  }
  // And one of which nothing is sent.
  const size_t blocks = host_.blocks().size();
  OpenDocument();
  ASSERT_EQ(calls_.HPEEndDoc(handle_, 0), kOk);
  EXPECT_EQ(host_.blocks().size(), blocks);
  const auto documents = Documents();
  ASSERT_EQ(documents.size(), 2U);
  for (const PrintedDocument& document : documents) {
    ASSERT_EQ(document.pages.size(), 1U);
    EXPECT_EQ(document.pages[0].start.number, 1U);
    EXPECT_EQ(document.pages_ended, 1U);
    EXPECT_EQ(document.pages_aborted, 0U);
  }
}

TEST_P(EngineDocumentTest, PropertiesOfTheNextPageDoNotTouchTheOpenOne) {
  ASSERT_EQ(host_.Initialize(), kOk);
  OpenDocument();
  SetUpPage(20, 4);
  ASSERT_EQ(calls_.HPEStartPage(handle_), kOk);
  SetUpPage(40, 8);
  EXPECT_EQ(SendLine(Picture(21, 4), 0), kBadValue);
  EXPECT_EQ(SendLine(Picture(20, 5), 4), kBadValue);
  SetUpPage(10, 1);
  Picture black(20, 4);
  black.Fill(0, 0, 20, 4, {0, 0, 0});
  EXPECT_EQ(SendLine(black, 3), kOk);
  EXPECT_EQ(calls_.HPEEndPage(handle_, 0) | calls_.HPEEndDoc(handle_, 0), kOk);
  const auto documents = Documents();
  EXPECT_EQ(documents.at(0).pages.at(0).start.width_dots, 20U);
  EXPECT_EQ(documents.at(0).pages.at(0).DropCount(0), 20U);
}

TEST_P(EngineDocumentTest, SharpeningSeesLinesLeftOutAsWhite) {
  // Every second line is light grey, and those between are left out or sent white. Sharpened at
  // level 12 a grey line has (4 x 240 - 2 x 255 - 2 x 240) x 12 / 32 = -11 between white ones, but
  // -5 with a grey one on one side: neither meets the limit of 12, so drops tell them apart.
  Picture picture(64, 40);
  for (uint32_t y = 1; y < 40; y += 2) picture.Fill(0, y, 64, 1, {240, 240, 240});
  ASSERT_EQ(host_.Initialize(), kOk);
  OpenDocument();
  PrintPage(picture);
  ASSERT_EQ(calls_.HPEStartPage(handle_), kOk);
  for (uint32_t y = 1; y < 40; y += 2) ASSERT_EQ(SendLine(picture, y), kOk);
  ASSERT_EQ(calls_.HPEEndPage(handle_, 0) | calls_.HPEEndDoc(handle_, 0), kOk);
  const auto documents = Documents();
  EXPECT_EQ(documents.at(0).pages.at(1).drops, documents.at(0).pages.at(0).drops);
}

TEST_P(EngineDocumentTest, ADocumentTakesAsManyPagesAsItsStreamCanCount) {
  ASSERT_EQ(host_.Initialize(), kOk);
  // Keeps the last 8 bytes.
  std::array<uint8_t, 8> tail = {};
  const HPEOutputCallback keep_tail = [](void* context, uint8_t* data, uint32_t length_bytes) {
    if (length_bytes >= 8) std::copy_n(data + length_bytes - 8, 8, static_cast<uint8_t*>(context));
  };
  const std::string table = StandardTable(GetParam());
  ASSERT_EQ(calls_.HPEStartDoc(handle_, keep_tail, table.c_str(), 0, 0, 142, tail.data()), kOk);
  SetUpPage(1, 1);
  for (int page = 1; page <= 65535; ++page) {
    ASSERT_EQ(calls_.HPEStartPage(handle_), kOk) << page;
    ASSERT_EQ(calls_.HPEEndPage(handle_, 0), kOk) << page;
  }
  EXPECT_EQ(calls_.HPEStartPage(handle_), kWrongOrder);
  EXPECT_EQ(calls_.HPEEndDoc(handle_, 0), kOk);
  EXPECT_EQ(tail, (std::array<uint8_t, 8>{0x1B, 0x2A, 0x01, 0x65, 0xFF, 0xFF, 0, 0}));
  ASSERT_EQ(calls_.HPEStartDoc(handle_, keep_tail, table.c_str(), 0, 0, 142, tail.data()), kOk);
  EXPECT_EQ(calls_.HPEStartPage(handle_), kOk);
}

}  // namespace
}  // namespace zr7700::reference_engine::testing
