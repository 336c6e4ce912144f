// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/placement.h"

#include <gtest/gtest.h>

#include <string>

namespace zr7700 {
namespace {

Scaling ScalingFrom(const std::string& text) {
  cups_option_t* options = nullptr;
  const int count = cupsParseOptions(text.c_str(), 0, &options);
  const Scaling scaling = ScalingOf(count, options);
  cupsFreeOptions(count, options);
  return scaling;
}

std::pair<int, int> PositionFrom(const std::string& text) {
  cups_option_t* options = nullptr;
  const int count = cupsParseOptions(text.c_str(), 0, &options);
  const Position position = PositionOf(count, options);
  cupsFreeOptions(count, options);
  return {position.horizontal, position.vertical};
}

TEST(ScalingOf, KnowsTheValuesOfPrintScaling) {
  EXPECT_EQ(ScalingFrom(""), Scaling::kUnset);
  EXPECT_EQ(ScalingFrom("print-scaling=auto"), Scaling::kAuto);
  EXPECT_EQ(ScalingFrom("print-scaling=auto-fit"), Scaling::kAuto);
  EXPECT_EQ(ScalingFrom("print-scaling=fit"), Scaling::kFit);
  EXPECT_EQ(ScalingFrom("print-scaling=FILL"), Scaling::kFill);
  EXPECT_EQ(ScalingFrom("print-scaling=none"), Scaling::kNone);
  EXPECT_EQ(ScalingFrom("print-scaling=huge"), Scaling::kUnset);
}

TEST(PositionOf, KnowsNinePlaces) {
  EXPECT_EQ(PositionFrom(""), std::pair(0, 0));
  EXPECT_EQ(PositionFrom("position=center"), std::pair(0, 0));
  EXPECT_EQ(PositionFrom("position=top-left"), std::pair(-1, -1));
  EXPECT_EQ(PositionFrom("position=top"), std::pair(0, -1));
  EXPECT_EQ(PositionFrom("position=right"), std::pair(1, 0));
  EXPECT_EQ(PositionFrom("position=bottom-right"), std::pair(1, 1));
  EXPECT_EQ(PositionFrom("position=elsewhere"), std::pair(0, 0));
}

constexpr Size kDisc = {.width = 340, .height = 340};

TEST(ScaleFor, FitMakesAllOfItAsLargeAsThePageAllows) {
  EXPECT_DOUBLE_EQ(ScaleFor(Scaling::kFit, {.width = 680, .height = 340}, kDisc), 0.5);
  EXPECT_DOUBLE_EQ(ScaleFor(Scaling::kFit, {.width = 100, .height = 170}, kDisc), 2);
}

TEST(ScaleFor, FillLeavesNoPartOfThePageEmpty) {
  EXPECT_DOUBLE_EQ(ScaleFor(Scaling::kFill, {.width = 680, .height = 340}, kDisc), 1);
  EXPECT_DOUBLE_EQ(ScaleFor(Scaling::kFill, {.width = 100, .height = 170}, kDisc), 3.4);
}

TEST(ScaleFor, NoneLeavesEverythingAsItIs) {
  EXPECT_DOUBLE_EQ(ScaleFor(Scaling::kNone, {.width = 6800, .height = 34}, kDisc), 1);
}

TEST(ScaleFor, AutoMakesSmallerOnlyWhatDoesNotFit) {
  for (const Scaling scaling : {Scaling::kAuto, Scaling::kUnset}) {
    EXPECT_DOUBLE_EQ(ScaleFor(scaling, {.width = 100, .height = 170}, kDisc), 1);
    EXPECT_DOUBLE_EQ(ScaleFor(scaling, {.width = 340, .height = 1360}, kDisc), 0.25);
    // 341 points are 340 after rounding somewhere on the way.
    EXPECT_DOUBLE_EQ(ScaleFor(scaling, {.width = 341, .height = 341}, kDisc), 1);
  }
}

TEST(PlaceAt, TheMiddleIsOffByHalfADotAtMost) {
  EXPECT_EQ(PlaceAt({}, 1417, 2834, 2834, 2834), (Place{708, 0, 1417, 2834}));
  EXPECT_EQ(PlaceAt({}, 2835, 2837, 2834, 2834), (Place{-1, -2, 2835, 2837}));
}

TEST(PlaceAt, EdgesAreThePages) {
  EXPECT_EQ(PlaceAt({-1, 1}, 100, 200, 2834, 2834), (Place{0, 2634, 100, 200}));
  EXPECT_EQ(PlaceAt({1, -1}, 3000, 200, 2834, 2834), (Place{-166, 0, 3000, 200}));
}

}  // namespace
}  // namespace zr7700
