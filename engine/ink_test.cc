// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/ink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace zr7700 {
namespace {

using testing::ElementsAre;

constexpr InkRules kNothing = {100, false, 255, 1, 3000};
constexpr InkRules kUsualLimit = {100, true, 255, 1, 3000};

std::vector<int> Applied(const InkRules& rules, uint8_t red, uint8_t green, uint8_t blue) {
  uint8_t pixel[3] = {red, green, blue};
  ApplyInkRules(rules, pixel);
  return {pixel[0], pixel[1], pixel[2]};
}

TEST(InkRulesOf, StandardColoursOnPlainMediaHaveNoLimit) {
  JobVariables variables = {};
  variables.InkSaturation = 90;
  variables.ColorMatching = 1;
  for (const uint8_t medium : {uint8_t{0}, uint8_t{1}, uint8_t{2}, uint8_t{6}}) {
    variables.DiscSurfaceQuality = medium;
    EXPECT_FALSE(InkRulesOf(variables).limit_on) << int{medium};
    EXPECT_EQ(InkRulesOf(variables).saturation_percent, 90);
  }
}

TEST(InkRulesOf, HighQualityMediaHoldTheInksToOneFullInk) {
  JobVariables variables = {};
  variables.ColorMatching = 1;
  variables.nPhotoThreshold = 700;
  for (const uint8_t medium : {uint8_t{3}, uint8_t{4}, uint8_t{5}}) {
    variables.DiscSurfaceQuality = medium;
    EXPECT_TRUE(InkRulesOf(variables).limit_on) << int{medium};
    EXPECT_EQ(InkRulesOf(variables).limit, 255) << int{medium};
  }
}

TEST(InkRulesOf, BestForPhotosTakesThePhotoThresholdOnAnyMedium) {
  JobVariables variables = {};
  variables.ColorMatching = 2;
  variables.nPhotoThreshold = 700;
  for (const uint8_t medium : {uint8_t{0}, uint8_t{1}, uint8_t{5}}) {
    variables.DiscSurfaceQuality = medium;
    EXPECT_TRUE(InkRulesOf(variables).limit_on) << int{medium};
    EXPECT_EQ(InkRulesOf(variables).limit, 700) << int{medium};
  }
}

TEST(InkRulesOf, ValueAndDivisorAreComputedWithAsSigned) {
  JobVariables variables = {};
  variables.nRunCompValue = 0xFFFFFFFF;
  variables.nRunCompDiv = 0x80000000;
  EXPECT_EQ(InkRulesOf(variables).run_value, -1);
  EXPECT_EQ(InkRulesOf(variables).run_div, INT32_MIN);
}

TEST(InkRules, NothingChangesWithoutSaturationAndLimit) {
  EXPECT_TRUE(kNothing.ChangesNothing());
  EXPECT_FALSE(kUsualLimit.ChangesNothing());
  InkRules saturated = kNothing;
  saturated.saturation_percent = 99;
  EXPECT_FALSE(saturated.ChangesNothing());
}

TEST(SaturatedInk, OneHundredPercentChangesNothing) {
  for (unsigned ink = 0; ink < 256; ++ink) {
    EXPECT_EQ(SaturatedInk(kNothing, static_cast<uint8_t>(ink)), ink);
  }
}

TEST(SaturatedInk, ScalesAndWraps) {
  const auto saturated = [](uint8_t percent, uint8_t ink) {
    return int{SaturatedInk({percent, false, 255, 1, 3000}, ink)};
  };
  EXPECT_EQ(saturated(90, 200), 184);   // 23600 >> 7
  EXPECT_EQ(saturated(120, 255), 38);   // 37740 >> 7 is 294
  EXPECT_EQ(saturated(0, 255), 55);     // 7140 >> 7: saturation 0 leaves 28 parts of 128
  EXPECT_EQ(saturated(255, 255), 51);   // 72165 >> 7 is 563
  EXPECT_EQ(saturated(99, 1), 0);       // 127 >> 7
  EXPECT_EQ(saturated(101, 255), 0);    // 32895 >> 7 is 256
  EXPECT_EQ(saturated(128, 128), 156);  // 19968 >> 7
  EXPECT_EQ(saturated(180, 0), 0);
}

TEST(LimitedInk, TakesExcessTimesValueTimesInkOverDivisor) {
  EXPECT_EQ(LimitedInk(kUsualLimit, 510, 255), 212);  // 130050 / 3000 = 43
  EXPECT_EQ(LimitedInk(kUsualLimit, 510, 5), 5);      // 2550 / 3000 = 0
  EXPECT_EQ(LimitedInk(kUsualLimit, 1, 255), 255);
}

TEST(LimitedInk, DivisorZeroTakesNothingOff) {
  EXPECT_EQ(LimitedInk({100, true, 255, 1, 0}, 510, 255), 255);
}

TEST(LimitedInk, SignsTurnTheLossIntoAGainThatWraps) {
  EXPECT_EQ(LimitedInk({100, true, 255, -1, 3000}, 510, 200), 234);  // + 102000 / 3000
  EXPECT_EQ(LimitedInk({100, true, 255, 1, -3000}, 510, 200), 234);
  EXPECT_EQ(LimitedInk({100, true, 255, -1, -3000}, 510, 200), 166);
  EXPECT_EQ(LimitedInk({100, true, 255, -1, 3000}, 510, 255), 42);  // 255 + 43 = 298
  // Toward zero: -2550 / 3000 is 0, not -1.
  EXPECT_EQ(LimitedInk({100, true, 255, -1, 3000}, 510, 5), 5);
}

TEST(LimitedInk, ResultWrapsModulo256) {
  EXPECT_EQ(LimitedInk({100, true, 255, 1, 1}, 2, 100), 156);  // 100 - 200
  EXPECT_EQ(LimitedInk({100, true, 255, 10, 1}, 100, 200),
            136);  // 200 - 200000 = -199800 = 136 - 781 x 256
  EXPECT_EQ(LimitedInk({100, true, 255, 1, 1}, 510, 255), 253);  // 255 - 130050 = -129795
}

TEST(LimitedInk, ProductWrapsModulo2To32) {
  // 510 x 0x7FFFFFFF x 255 is 130050 x (2^31 - 1): 65025 x 2^32 - 130050, thus -130050.
  EXPECT_EQ(LimitedInk({100, true, 255, INT32_MAX, 3000}, 510, 255), 42);  // 255 + 43 = 298
  // 1 x -2^31 x 3 is 2^31 modulo 2^32, the lowest number; over -1 it stays that: no change.
  EXPECT_EQ(LimitedInk({100, true, 255, INT32_MIN, -1}, 1, 3), 3);
  EXPECT_EQ(LimitedInk({100, true, 255, INT32_MIN, INT32_MIN}, 1, 3), 2);  // 3 - 1
  EXPECT_EQ(LimitedInk({100, true, 255, INT32_MIN, 1}, 2, 3), 3);          // the product is 0
  EXPECT_EQ(LimitedInk({100, true, 255, 1, INT32_MIN}, 510, 255), 255);
}

TEST(ApplyInkRules, BlackLosesInkOnHighQualityMedia) {
  EXPECT_THAT(Applied(kUsualLimit, 0, 0, 0), ElementsAre(43, 43, 43));
}

TEST(ApplyInkRules, InksUpToTheLimitStayAsTheyAre) {
  EXPECT_THAT(Applied(kUsualLimit, 0, 255, 255), ElementsAre(0, 255, 255));  // excess 0
  EXPECT_THAT(Applied(kUsualLimit, 170, 170, 170), ElementsAre(170, 170, 170));
}

TEST(ApplyInkRules, EachInkLosesByItsOwnValueAndTheOneExcess) {
  // Inks 255, 200, 100: excess 300; losses 76500, 60000, 30000 over 3000 are 25, 20, 10.
  EXPECT_THAT(Applied(kUsualLimit, 0, 55, 155), ElementsAre(25, 75, 165));
}

TEST(ApplyInkRules, PhotoLimitLeavesTheFirst700) {
  // Excess 65: 65 x 255 / 3000 = 5.
  EXPECT_THAT(Applied({100, true, 700, 1, 3000}, 0, 0, 0), ElementsAre(5, 5, 5));
}

TEST(ApplyInkRules, SaturationComesBeforeTheLimit) {
  // Ink 255 at 90 %: 30090 >> 7 = 235; excess 450; loss 450 x 235 / 3000 = 35; 200 are left.
  EXPECT_THAT(Applied({90, true, 255, 1, 3000}, 0, 0, 0), ElementsAre(55, 55, 55));
}

TEST(InkTables, EqualThePlainFormForEverySaturation) {
  std::vector<uint8_t> pixels;
  for (unsigned i = 0; i < 256; ++i) {
    const auto value = static_cast<uint8_t>(i);
    pixels.insert(pixels.end(), {value, static_cast<uint8_t>(i * 7), static_cast<uint8_t>(~i), 9});
  }
  for (unsigned percent = 0; percent < 256; ++percent) {
    for (const bool limit_on : {false, true}) {
      const InkRules rules = {static_cast<uint8_t>(percent), limit_on, 255, 1, 3000};
      std::vector<uint8_t> plain = pixels;
      for (size_t i = 0; i < plain.size(); i += 4) {
        ApplyInkRules(rules, &plain[i]);
        plain[i + 3] = 0;
      }
      std::vector<uint8_t> tabled = pixels;
      InkTables(rules).Apply(tabled.data(), 256);
      ASSERT_EQ(tabled, plain) << percent << limit_on;
    }
  }
}

TEST(InkTables, EqualThePlainFormForEveryInkSumAroundTheLimit) {
  for (const int32_t limit : {INT32_MIN, -1, 0, 1, 254, 255, 700, 764, 765, 766, INT32_MAX}) {
    const InkRules rules = {100, true, limit, 7, 500};
    const InkTables tables(rules);
    for (unsigned red = 0; red < 256; red += 5) {
      for (unsigned green = 0; green < 256; green += 5) {
        uint8_t plain[4] = {static_cast<uint8_t>(red), static_cast<uint8_t>(green), 3, 0};
        uint8_t tabled[4] = {plain[0], plain[1], plain[2], 0xAA};
        ApplyInkRules(rules, plain);
        tables.Apply(tabled, 1);
        ASSERT_THAT(tabled, testing::ElementsAreArray(plain))
            << limit << " " << red << " " << green;
      }
    }
  }
}

TEST(InkTables, RememberTheirRules) {
  EXPECT_EQ(InkTables(kUsualLimit).rules(), kUsualLimit);
  EXPECT_NE(InkTables(kUsualLimit).rules(), kNothing);
}

}  // namespace
}  // namespace zr7700
