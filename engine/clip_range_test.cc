// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/clip_range.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "engine/clip_buffers.h"

namespace zr7700 {
namespace {

// A table of one entry for line 0 and a range that shows whether it has been written.
struct OneLine {
  explicit OneLine(ClipEntry entry, uint32_t max_dots = 5100) {
    memcpy(table.data(), &entry, sizeof entry);
    variables.clipDataBufs = table.data();
    variables.clipBufferBytes = kClipEntryBytes;
    variables.maxImageDots = max_dots;
  }

  void Expect(uint16_t width, const ClipRange& wanted) {
    ASSERT_TRUE(GetClipRange(variables, 0, width, range));
    EXPECT_EQ(range.outer_high, wanted.outer_high);
    EXPECT_EQ(range.outer_low, wanted.outer_low);
    EXPECT_EQ(range.inner_high, wanted.inner_high);
    EXPECT_EQ(range.inner_low, wanted.inner_low);
  }

  std::vector<uint8_t> table = std::vector<uint8_t>(kClipEntryBytes);
  JobVariables variables = {};
  ClipRange range = {1, 2, 3, 4};
};

TEST(ClipRange, UsualRing) { OneLine({1400, 300}).Expect(2834, {2817, 17, 1717, 1117}); }

TEST(ClipRange, EntryOfZerosClipsNothing) { OneLine({0, 0}).Expect(2834, {5100, 0, 0, 5100}); }

TEST(ClipRange, OuterValueMustBeBelowHalfTheWidth) {
  OneLine({1416, 0}).Expect(2834, {2833, 1, 0, 5100});
  OneLine({1417, 0}).Expect(2834, {5100, 0, 0, 5100});
}

TEST(ClipRange, InnerValueMustBeBelowTheWholeWidth) {
  // Beyond the half the low limit wraps, so that nothing lies inside.
  OneLine({0, 1417}).Expect(2834, {5100, 0, 2834, 0});
  OneLine({0, 1418}).Expect(2834, {5100, 0, 2835, 65535});
  OneLine({0, 2833}).Expect(2834, {5100, 0, 4250, 64120});
  OneLine({0, 2834}).Expect(2834, {5100, 0, 0, 5100});
}

TEST(ClipRange, HighInnerLimitWrapsToo) {
  OneLine({0, 65534}).Expect(65535, {5100, 0, 32765, 32769});
}

TEST(ClipRange, HalfOfAnOddWidthIsRoundedDown) { OneLine({20, 10}).Expect(67, {53, 13, 43, 23}); }

TEST(ClipRange, NoLimitIsTheLow16BitsOfTheLargestImage) {
  OneLine({0, 0}, 0x12345678).Expect(100, {0x5678, 0, 0, 0x5678});
}

TEST(ClipRange, NarrowestWidths) {
  OneLine({1, 1}).Expect(0, {5100, 0, 0, 5100});
  OneLine({1, 1}).Expect(1, {5100, 0, 0, 5100});
  OneLine({1, 1}).Expect(2, {5100, 0, 2, 0});
}

TEST(ClipRange, WithoutATableThereIsNothingToClipBy) {
  OneLine line({1400, 300});
  line.variables.clipDataBufs = nullptr;
  EXPECT_FALSE(GetClipRange(line.variables, 0, 2834, line.range));
  EXPECT_EQ(line.range.outer_high, 1);
}

TEST(ClipRange, LineBeyondTheTableHasNothingToClipBy) {
  OneLine line({1400, 300});
  EXPECT_FALSE(GetClipRange(line.variables, 1, 2834, line.range));
  line.variables.clipBufferBytes = 3;
  EXPECT_FALSE(GetClipRange(line.variables, 0, 2834, line.range));
}

TEST(ClipRange, EveryLineHasItsOwnEntry) {
  std::vector<uint8_t> table(10 * kClipEntryBytes);
  const ClipEntry last = {40, 0};
  memcpy(table.data() + 9 * kClipEntryBytes, &last, sizeof last);
  JobVariables variables = {};
  variables.clipDataBufs = table.data();
  variables.clipBufferBytes = 43;  // a part of an eleventh entry is none
  variables.maxImageDots = 5100;
  ClipRange range;
  ASSERT_TRUE(GetClipRange(variables, 9, 100, range));
  EXPECT_EQ(range.outer_high, 90);
  ASSERT_TRUE(GetClipRange(variables, 8, 100, range));
  EXPECT_EQ(range.outer_high, 5100);
  EXPECT_FALSE(GetClipRange(variables, 10, 100, range));
}

}  // namespace
}  // namespace zr7700
