// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/feed_command.h"

#include "tests/support/job_test.h"

namespace zr7700 {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<uint8_t>;

class FeedCommandTest : public test::JobTest {
 protected:
  Bytes Adjusted(Bytes block) {
    found_ = AdjustFirstFeed(adjustment_, block);
    return block;
  }

  int32_t adjustment_ = -1900;
  bool found_ = false;
};

TEST_F(FeedCommandTest, FeedIsShiftedByTheSetting) {
  // 10000 becomes 8100.
  EXPECT_EQ(Adjusted({9, 0x1B, 0x2A, 7, 0x66, 0, 0, 0x27, 0x10, 9}),
            (Bytes{9, 0x1B, 0x2A, 7, 0x66, 0, 0, 0x1F, 0xA4, 9}));
  EXPECT_TRUE(found_);
  EXPECT_THAT(LogLines(), ElementsAre("**Found FEED: 10000, {0x00, 0x00, 0x27, 0x10}\n",
                                      "**Set FEED: 8100, {0x00, 0x00, 0x1f, 0xa4}\n"));
}

TEST_F(FeedCommandTest, SumWrapsModulo2To32) {
  // 1899 - 1900 is 2^32 - 1.
  EXPECT_EQ(Adjusted({0x1B, 0x2A, 7, 0x66, 0, 0, 0x07, 0x6B}),
            (Bytes{0x1B, 0x2A, 7, 0x66, 0xFF, 0xFF, 0xFF, 0xFF}));
  EXPECT_THAT(LogLines(), Contains("**Set FEED: 4294967295, {0xff, 0xff, 0xff, 0xff}\n"));
  adjustment_ = INT32_MAX;
  EXPECT_EQ(Adjusted({0x1B, 0x2A, 7, 0x66, 0xFF, 0xFF, 0xFF, 0xFF}),
            (Bytes{0x1B, 0x2A, 7, 0x66, 0x7F, 0xFF, 0xFF, 0xFE}));
}

TEST_F(FeedCommandTest, OnlyTheFirstOfTwoCommandsIsAdjusted) {
  EXPECT_EQ(
      Adjusted({0x1B, 0x2A, 7, 0x66, 0, 0, 0x07, 0x6C, 0x1B, 0x2A, 7, 0x66, 0, 0, 0x27, 0x10}),
      (Bytes{0x1B, 0x2A, 7, 0x66, 0, 0, 0, 0, 0x1B, 0x2A, 7, 0x66, 0, 0, 0x27, 0x10}));
  EXPECT_EQ(LogLines().size(), 2u);
}

TEST_F(FeedCommandTest, CommandAfterAFalseStartIsFound) {
  EXPECT_EQ(Adjusted({0x1B, 0x2A, 0x1B, 0x2A, 7, 0x66, 0, 0, 0x27, 0x10}),
            (Bytes{0x1B, 0x2A, 0x1B, 0x2A, 7, 0x66, 0, 0, 0x1F, 0xA4}));
}

TEST_F(FeedCommandTest, BlocksWithoutAWholeCommandStayAsTheyAre) {
  const Bytes command = {0x1B, 0x2A, 7, 0x66, 0, 0, 0x27};
  for (size_t length = 0; length <= command.size(); ++length) {
    const Bytes block(command.begin(), command.begin() + static_cast<ptrdiff_t>(length));
    EXPECT_EQ(Adjusted(block), block) << length;
    EXPECT_FALSE(found_) << length;
  }
  for (size_t i = 0; i < 4; ++i) {
    Bytes block = {0x1B, 0x2A, 7, 0x66, 0, 0, 0x27, 0x10};
    block[i] ^= 1;
    EXPECT_EQ(Adjusted(block), block) << i;
    EXPECT_FALSE(found_) << i;
  }
  EXPECT_THAT(LogLines(), IsEmpty());
}

// A block with a two-byte feed command at `position`, 100 as its value and marks at 103 and 104.
Bytes Feed16Block(size_t position, size_t bytes) {
  Bytes block(bytes, 0xEE);
  block[103] = 0xA1;
  block[104] = 0xA2;
  block[position] = 0x1B;
  block[position + 1] = 0x23;
  block[position + 2] = 0x01;
  block[position + 3] = 0x00;
  if (position + 104 < bytes) {
    block[position + 103] = 0;
    block[position + 104] = 100;
  }
  return block;
}

int Adjust16(Bytes& block, bool& found, int16_t adjustment) {
  return AdjustFeed16(block.data(), static_cast<uint32_t>(block.size()), found, adjustment);
}

TEST_F(FeedCommandTest, TwoByteFeedAtTheBlocksStart) {
  Bytes block = Feed16Block(0, 105);
  bool found = false;
  EXPECT_EQ(Adjust16(block, found, 1000), 1);
  EXPECT_TRUE(found);
  Bytes expected = Feed16Block(0, 105);
  expected[103] = 0x04;  // 1100
  expected[104] = 0x4C;
  EXPECT_EQ(block, expected);
  EXPECT_THAT(LogLines(),
              ElementsAre("**Found FEED: 100, {0x00, 0x64}", "**Set FEED: 1100  {0x04, 0x4c}"));
}

TEST_F(FeedCommandTest, TwoByteFeedFurtherOnIsLoggedWithTheBlocksBytes103And104) {
  Bytes block = Feed16Block(20, 200);
  bool found = false;
  EXPECT_EQ(Adjust16(block, found, -1), 1);
  EXPECT_EQ(block[123], 0);
  EXPECT_EQ(block[124], 99);
  EXPECT_EQ(block[103], 0xA1);
  EXPECT_THAT(LogLines(),
              ElementsAre("**Found FEED: 100, {0xa1, 0xa2}", "**Set FEED: 99  {0xa1, 0xa2}"));
}

TEST_F(FeedCommandTest, TwoByteFeedWrapsIn16Bits) {
  Bytes block = Feed16Block(0, 105);
  bool found = false;
  EXPECT_EQ(Adjust16(block, found, -101), 1);
  EXPECT_EQ(block[103], 0xFF);
  EXPECT_EQ(block[104], 0xFF);
  EXPECT_EQ(Adjust16(block, found, 2), 1);
  EXPECT_EQ(block[103], 0);
  EXPECT_EQ(block[104], 1);
}

TEST_F(FeedCommandTest, TwoByteFeedWhoseValueLiesOutsideIsNone) {
  Bytes block = Feed16Block(1, 105);
  const Bytes before = block;
  bool found = false;
  EXPECT_EQ(Adjust16(block, found, 5), 0);
  EXPECT_FALSE(found);
  EXPECT_EQ(block, before);
  EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(FeedCommandTest, BlockWithoutATwoByteFeed) {
  Bytes block(300, 0x1B);
  bool found = false;
  EXPECT_EQ(Adjust16(block, found, 5), 0);
  EXPECT_EQ(AdjustFeed16(block.data(), 0, found, 5), 0);
  EXPECT_EQ(AdjustFeed16(nullptr, 0, found, 5), 0);
  EXPECT_FALSE(found);
}

TEST_F(FeedCommandTest, OnlyTheFirstTwoByteFeedIsAdjusted) {
  Bytes block = Feed16Block(0, 300);
  const Bytes second = Feed16Block(0, 105);
  std::copy(second.begin(), second.begin() + 4, block.begin() + 110);
  Bytes expected = block;
  expected[104] = 101;
  bool found = false;
  EXPECT_EQ(Adjust16(block, found, 1), 1);
  EXPECT_EQ(block, expected);
}

TEST_F(FeedCommandTest, FeedLinesAreWrittenFromLevelThree) {
  for (const int threshold : {1, 2, 3, 4}) {
    const test::LogCapture log(threshold);
    Adjusted({0x1B, 0x2A, 7, 0x66, 0, 0, 0x27, 0x10});
    if (threshold < 3) {
      EXPECT_THAT(log.Lines(), IsEmpty()) << threshold;
    } else {
      EXPECT_THAT(log.Lines(), ElementsAre("**Found FEED: 10000, {0x00, 0x00, 0x27, 0x10}\n",
                                           "**Set FEED: 8100, {0x00, 0x00, 0x1f, 0xa4}\n"));
    }
  }
}

TEST_F(FeedCommandTest, TwoByteFeedLinesAreDetails) {
  const test::LogCapture log(1);
  Bytes block = Feed16Block(0, 105);
  bool found = false;
  EXPECT_EQ(Adjust16(block, found, 1000), 1);
  EXPECT_THAT(log.Lines(),
              ElementsAre("**Found FEED: 100, {0x00, 0x64}", "**Set FEED: 1100  {0x04, 0x4c}"));
}

}  // namespace
}  // namespace zr7700
