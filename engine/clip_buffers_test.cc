// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/clip_buffers.h"

#include <sys/resource.h>

#include <cstring>

#include "tests/support/job_test.h"

namespace zr7700 {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// A square page of `side` dots with a margin all round, as page start leaves it.
JobVariables PageOf(uint32_t side, uint32_t margin) {
  JobVariables variables{};
  variables.discForm = 1;
  variables.clipBufferBytes = 20400;
  variables.maxImageDots = 5100;
  variables.imageWidth = variables.imageHeight = side;
  variables.OuterMargin = variables.leftOutputImage = margin;
  variables.rightOutputImage = side - margin;
  variables.topOutputImage = static_cast<uint16_t>(margin);
  variables.bottomOutputImage = static_cast<uint16_t>(side - margin);
  return variables;
}

ClipEntry EntryAt(const uint8_t* table, size_t line) {
  ClipEntry entry;
  memcpy(&entry, table + line * kClipEntryBytes, sizeof entry);
  return entry;
}

class ClipBuffersTest : public test::JobTest {
 protected:
  ~ClipBuffersTest() override { ClipDataBufsDelete(variables_); }

  // The lines of a creation that failed because of the geometry.
  void ExpectRefusedGeometry(const std::string& reason) {
    EXPECT_FALSE(ClipDataBufsCreate(variables_));
    const std::vector<std::string> lines = LogLines();
    ASSERT_GE(lines.size(), 6u);
    EXPECT_THAT(std::vector<std::string>(lines.begin() + 2, lines.end()),
                ElementsAre(reason, "ClipGetData:  returning (FALSE)",
                            "ClipDataBufsInitialize: returning (FALSE)",
                            "ERROR:  OemClipDataBufsCreate: initialization failure!",
                            "OemClipDataBufsDelete: FREE clipDataBufs",
                            "ClipDataBufsCreate: returning (FALSE)"));
    ExpectEmptied();
  }

  // What is logged of a failed creation at that threshold.
  std::vector<std::string> FailureAt(int threshold) {
    const test::LogCapture log(threshold);
    EXPECT_FALSE(ClipDataBufsCreate(variables_));
    return log.Lines();
  }

  void ExpectEmptied() {
    EXPECT_EQ(variables_.clipBufCount, 0u);
    EXPECT_EQ(variables_.clipBufSize, 0u);
    EXPECT_EQ(variables_.clipDataBufs, nullptr);
  }

  JobVariables variables_ = PageOf(2834, 7);
};

TEST_F(ClipBuffersTest, SizeIsTheBytesThatTheJobRequires) {
  EXPECT_EQ(ClipDataBufsSize(variables_), 20400u);
}

TEST_F(ClipBuffersTest, EveryFormBelowSevenNeedsOneBuffer) {
  for (uint32_t form = 0; form < 7; ++form) {
    variables_.discForm = form;
    EXPECT_EQ(ClipDataBufsRequired(variables_), 1u) << form;
  }
  EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(ClipBuffersTest, FormsFromSevenUpAreInvalid) {
  for (const uint32_t form : {7u, 8u, 0xFFFFFFFFu}) {
    variables_.discForm = form;
    EXPECT_EQ(ClipDataBufsRequired(variables_), 0xFFFFFFFFu) << form;
  }
  EXPECT_THAT(LogLines(), testing::Each("ClipDataBufsRequired: invalid form!"));
  EXPECT_EQ(LogLines().size(), 3u);
}

TEST_F(ClipBuffersTest, CreateMakesOneFilledBuffer) {
  ASSERT_TRUE(ClipDataBufsCreate(variables_));
  EXPECT_EQ(variables_.clipBufCount, 1u);
  EXPECT_EQ(variables_.clipBufSize, 20400u);
  ASSERT_NE(variables_.clipDataBufs, nullptr);
  // The line above the disc has no limits, its first line reaches 53 dots: the root of 0.99656604 x
  // (1410 squared - 1409 squared).
  EXPECT_EQ(EntryAt(variables_.clipDataBufs, 6).outer, 0);
  EXPECT_EQ(EntryAt(variables_.clipDataBufs, 7).outer, 53);
  EXPECT_THAT(LogLines(), ElementsAre("     ClipGetData: nID = 0 (in 300dpi units))\n",
                                      "     ClipGetData: wImageWidth = 2820, wImageHeight = 2820\n",
                                      "     ClipGetData: setting initial wIndex to 7"));
}

TEST_F(ClipBuffersTest, FormSevenFailsForWantOfACount) {
  variables_.discForm = 7;
  EXPECT_FALSE(ClipDataBufsCreate(variables_));
  EXPECT_THAT(LogLines(), ElementsAre("ClipDataBufsRequired: invalid form!",
                                      "ERROR:  OemClipDataBufsCreate: failed to get count!",
                                      "ClipDataBufsCreate: returning (FALSE)"));
  ExpectEmptied();
}

TEST_F(ClipBuffersTest, SizeOfAllBitsSetFails) {
  variables_.clipBufferBytes = 0xFFFFFFFFu;
  EXPECT_FALSE(ClipDataBufsCreate(variables_));
  EXPECT_THAT(LogLines(), ElementsAre("ERROR:  OemClipDataBufsCreate: failed to get size!\n",
                                      "ClipDataBufsCreate: returning (FALSE)"));
  ExpectEmptied();
}

TEST_F(ClipBuffersTest, SizeOfZeroFailsForWantOfABuffer) {
  variables_.clipBufferBytes = 0;
  EXPECT_FALSE(ClipDataBufsCreate(variables_));
  EXPECT_THAT(LogLines(), ElementsAre("ERROR:  ClipDataBufsInitialize(): invalid buffer!",
                                      "ClipDataBufsInitialize: returning (FALSE)",
                                      "ERROR:  OemClipDataBufsCreate: initialization failure!",
                                      "ClipDataBufsCreate: returning (FALSE)"));
  ExpectEmptied();
}

TEST_F(ClipBuffersTest, PrintableRectangleWiderThanTheLimitFails) {
  variables_ = PageOf(5101, 0);
  ExpectRefusedGeometry("Invalid Dimension wOd: 5101, Pline 5100");
}

TEST_F(ClipBuffersTest, PrintableRectangleAsWideAsTheLimitIsAccepted) {
  variables_ = PageOf(5100, 0);
  EXPECT_TRUE(ClipDataBufsCreate(variables_));
}

TEST_F(ClipBuffersTest, HoleWiderThanAnEmptyRectangleFails) {
  variables_ = PageOf(1000, 500);
  variables_.InnerDiam = 150;
  ExpectRefusedGeometry("Invalid Dimension wOd: 0, Pline 5100");
}

TEST_F(ClipBuffersTest, HoleAsWideAsTheDiscIsAcceptedAndOneDotMoreFails) {
  variables_.InnerDiam = 254;  // a radius of 300
  variables_.leftOutputImage = 0;
  variables_.rightOutputImage = 600;
  variables_.topOutputImage = 0;
  variables_.bottomOutputImage = 600;
  EXPECT_TRUE(ClipDataBufsCreate(variables_));
  variables_.rightOutputImage = 599;
  variables_.bottomOutputImage = 599;
  log_.Clear();
  ExpectRefusedGeometry("Invalid Dimension wOd: 599, Pline 5100");
}

TEST_F(ClipBuffersTest, EveryPageGetsATableOfItsOwnAndEarlierOnesStay) {
  ASSERT_TRUE(ClipDataBufsCreate(variables_));
  uint8_t* const first = variables_.clipDataBufs;
  const JobVariables small = PageOf(1000, 0);
  variables_.imageWidth = variables_.imageHeight = 1000;
  variables_.OuterMargin = variables_.leftOutputImage = 0;
  variables_.rightOutputImage = small.rightOutputImage;
  variables_.topOutputImage = small.topOutputImage;
  variables_.bottomOutputImage = small.bottomOutputImage;
  ASSERT_TRUE(ClipDataBufsCreate(variables_));
  uint8_t* const second = variables_.clipDataBufs;
  ASSERT_TRUE(ClipDataBufsCreate(variables_));
  EXPECT_NE(first, second);
  EXPECT_NE(second, variables_.clipDataBufs);
  EXPECT_EQ(EntryAt(first, 7).outer, 53);
  EXPECT_EQ(EntryAt(second, 0).outer, 31);
  EXPECT_TRUE(ClipDataBufsDelete(variables_));
  EXPECT_EQ(EntryAt(first, 7).outer, 53);
  EXPECT_EQ(EntryAt(second, 0).outer, 31);
}

TEST_F(ClipBuffersTest, FailureOnALaterPageGivesTheNewestTableBack) {
  ASSERT_TRUE(ClipDataBufsCreate(variables_));
  variables_.discForm = 7;
  log_.Clear();
  EXPECT_FALSE(ClipDataBufsCreate(variables_));
  EXPECT_THAT(LogLines(), ElementsAre("ClipDataBufsRequired: invalid form!",
                                      "ERROR:  OemClipDataBufsCreate: failed to get count!",
                                      "OemClipDataBufsDelete: FREE clipDataBufs",
                                      "ClipDataBufsCreate: returning (FALSE)"));
  ExpectEmptied();
}

TEST_F(ClipBuffersTest, InitializeRefusesANullBuffer) {
  EXPECT_FALSE(ClipDataBufsInitialize(variables_, nullptr, 20400, 0));
  EXPECT_THAT(LogLines(), ElementsAre("ERROR:  ClipDataBufsInitialize(): invalid buffer!",
                                      "ClipDataBufsInitialize: returning (FALSE)"));
}

TEST_F(ClipBuffersTest, InitializeRefusesABufferOneByteTooSmall) {
  std::vector<ClipEntry> buffer(5100, ClipEntry{1, 1});
  auto* const bytes = reinterpret_cast<uint8_t*>(buffer.data());
  EXPECT_FALSE(ClipDataBufsInitialize(variables_, bytes, 20399, 0));
  EXPECT_EQ(buffer[0].outer, 1);
  EXPECT_THAT(LogLines(), ElementsAre("ERROR:  ClipDataBufsInitialize(): buffer too small!",
                                      "ClipDataBufsInitialize: returning (FALSE)"));
}

TEST_F(ClipBuffersTest, InitializeFillsABufferWhateverItHeldAndWhateverItsIndex) {
  std::vector<ClipEntry> buffer(5100, ClipEntry{1, 1});
  auto* const bytes = reinterpret_cast<uint8_t*>(buffer.data());
  EXPECT_TRUE(ClipDataBufsInitialize(variables_, bytes, 20400, 3));
  EXPECT_EQ(buffer[6].outer, 0);
  EXPECT_EQ(buffer[7].outer, 53);
  EXPECT_EQ(buffer[5099].inner, 0);
}

TEST_F(ClipBuffersTest, DeleteGivesTheTableBackAndEmptiesTheFields) {
  ASSERT_TRUE(ClipDataBufsCreate(variables_));
  log_.Clear();
  EXPECT_TRUE(ClipDataBufsDelete(variables_));
  EXPECT_THAT(LogLines(), ElementsAre("OemClipDataBufsDelete: FREE clipDataBufs"));
  ExpectEmptied();
}

TEST_F(ClipBuffersTest, DeleteOfNothingIsFine) {
  variables_.clipBufSize = 20400;
  EXPECT_TRUE(ClipDataBufsDelete(variables_));
  EXPECT_THAT(LogLines(), IsEmpty());
  ExpectEmptied();
}

TEST_F(ClipBuffersTest, DeleteOfBuffersThatAreNotThereFailsAndLeavesTheFields) {
  variables_.clipBufCount = 1;
  variables_.clipBufSize = 20400;
  EXPECT_FALSE(ClipDataBufsDelete(variables_));
  EXPECT_THAT(LogLines(), ElementsAre("ERROR:  OemClipDataBufsDelete(): no memory!",
                                      "ClipDataBufsDelete: returning (FALSE)"));
  EXPECT_EQ(variables_.clipBufCount, 1u);
  EXPECT_EQ(variables_.clipBufSize, 20400u);
}

TEST_F(ClipBuffersTest, InvalidFormAtEveryLevel) {
  variables_.discForm = 7;
  const char* const form = "ClipDataBufsRequired: invalid form!";
  const char* const count = "ERROR:  OemClipDataBufsCreate: failed to get count!";
  EXPECT_THAT(FailureAt(1), ElementsAre(count));
  EXPECT_THAT(FailureAt(2), ElementsAre(form, count));
  EXPECT_THAT(FailureAt(3), ElementsAre(form, count));
  EXPECT_THAT(FailureAt(4), ElementsAre(form, count));
}

TEST_F(ClipBuffersTest, ErrorsAreDetailsAndTheFailedReturnsTraces) {
  for (const int threshold : {1, 2, 3, 4}) {
    variables_.clipBufferBytes = 0xFFFFFFFFu;
    EXPECT_THAT(FailureAt(threshold),
                ElementsAre("ERROR:  OemClipDataBufsCreate: failed to get size!\n"));
    variables_.clipBufferBytes = 0;
    EXPECT_THAT(FailureAt(threshold),
                ElementsAre("ERROR:  ClipDataBufsInitialize(): invalid buffer!",
                            "ERROR:  OemClipDataBufsCreate: initialization failure!"));
  }
}

TEST_F(ClipBuffersTest, TooSmallABufferIsADetail) {
  const test::LogCapture log(1);
  uint8_t buffer[4] = {};
  EXPECT_FALSE(ClipDataBufsInitialize(variables_, buffer, sizeof buffer, 0));
  EXPECT_THAT(log.Lines(), ElementsAre("ERROR:  ClipDataBufsInitialize(): buffer too small!"));
}

TEST_F(ClipBuffersTest, DeletingIsATraceAndWhatIsNotThereADetail) {
  ASSERT_TRUE(ClipDataBufsCreate(variables_));
  const test::LogCapture log(4);
  EXPECT_TRUE(ClipDataBufsDelete(variables_));
  EXPECT_THAT(log.Lines(), IsEmpty());
  variables_.clipBufCount = 1;
  for (const int threshold : {1, 2, 3, 4}) {
    const test::LogCapture failure(threshold);
    EXPECT_FALSE(ClipDataBufsDelete(variables_));
    EXPECT_THAT(failure.Lines(), ElementsAre("ERROR:  OemClipDataBufsDelete(): no memory!"));
  }
}

// A sanitizer's allocator ends the process instead of answering null.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(ClipBuffersTest, WithoutMemoryForTheTableItFails) {
  const auto create_with_a_gigabyte = [this] {
    const rlimit limit = {1U << 30, 1U << 30};
    setrlimit(RLIMIT_AS, &limit);
    variables_.clipBufferBytes = 0xFFFFFFFCU;
    EXPECT_FALSE(ClipDataBufsCreate(variables_));
    EXPECT_THAT(LogLines(), ElementsAre("ERROR:  OemClipDataBufsCreate: alloc failed!",
                                        "ClipDataBufsCreate: returning (FALSE)"));
    ExpectEmptied();
    EXPECT_THAT(FailureAt(1), ElementsAre("ERROR:  OemClipDataBufsCreate: alloc failed!"));
    exit(HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(create_with_a_gigabyte(), testing::ExitedWithCode(0), "");
}
#endif

}  // namespace
}  // namespace zr7700
