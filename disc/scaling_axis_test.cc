// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/scaling_axis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace zr7700 {
namespace {

using ::testing::ElementsAre;
using ::testing::FloatNear;

std::vector<float> WeightsOf(const ScalingAxis& axis, uint32_t i) {
  const auto weights = axis.Weights(i);
  return {weights.begin(), weights.end()};
}

TEST(ScalingAxis, SameLengthIsACopy) {
  const ScalingAxis axis(5, 0, 5, 5);
  EXPECT_TRUE(axis.IsCopy());
  EXPECT_EQ(axis.count(), 5U);
  for (uint32_t i = 0; i < 5; ++i) {
    EXPECT_EQ(axis.First(i), i);
    EXPECT_THAT(WeightsOf(axis, i), ElementsAre(1));
  }
}

TEST(ScalingAxis, HalfTheLengthAveragesPairs) {
  const ScalingAxis axis(6, 0, 3, 3);
  EXPECT_EQ(axis.First(1), 2U);
  EXPECT_EQ(axis.Last(1), 3U);
  EXPECT_THAT(WeightsOf(axis, 1), ElementsAre(0.5, 0.5));
}

TEST(ScalingAxis, FiveDotsBecomeTwoByTheirShares) {
  // 2.5 dots each: the middle one is halved.
  const ScalingAxis axis(5, 0, 2, 2);
  const auto near = [](float weight) { return FloatNear(weight, 1e-5F); };
  EXPECT_THAT(WeightsOf(axis, 0), ElementsAre(near(0.4F), near(0.4F), near(0.2F)));
  EXPECT_EQ(axis.First(1), 2U);
  EXPECT_THAT(WeightsOf(axis, 1), ElementsAre(near(0.2F), near(0.4F), near(0.4F)));
}

TEST(ScalingAxis, TwiceTheLengthInterpolatesWithACubic) {
  // Dot 4 of 10 lies at 4.5 / 2 - 0.5 = 1.75, a quarter before source dot 2. The cubic at its
  // distances from source dots 0 to 3:
  // 1.75: 2 + 1.75 (1.75 (2.5 - 0.875) - 4) = -0.0234375
  // 0.75: 1 + 0.5625 (1.125 - 2.5) = 0.2265625
  // 0.25: 1 + 0.0625 (0.375 - 2.5) = 0.8671875
  // 1.25: 2 + 1.25 (1.25 (2.5 - 0.625) - 4) = -0.0703125
  const ScalingAxis axis(5, 0, 10, 10);
  const auto near = [](float weight) { return FloatNear(weight, 1e-5F); };
  EXPECT_EQ(axis.First(4), 0U);
  EXPECT_THAT(WeightsOf(axis, 4), ElementsAre(near(-0.0234375F), near(0.2265625F), near(0.8671875F),
                                              near(-0.0703125F)));
}

TEST(ScalingAxis, EdgesGoOn) {
  // Dot 0 of 10 lies at -0.25: source dot 0 stands in for dots -2 and -1, 1.75 and 0.75 away.
  const ScalingAxis axis(5, 0, 10, 10);
  const auto near = [](float weight) { return FloatNear(weight, 1e-5F); };
  EXPECT_EQ(axis.First(0), 0U);
  EXPECT_THAT(WeightsOf(axis, 0),
              ElementsAre(near(-0.0234375F + 0.2265625F + 0.8671875F), near(-0.0703125F)));
}

TEST(ScalingAxis, KeepsOnlyWhatLiesOnThePage) {
  const ScalingAxis before(10, -3, 10, 5);
  EXPECT_EQ(before.first_on_page(), 0U);
  EXPECT_EQ(before.count(), 5U);
  EXPECT_EQ(before.First(0), 3U);
  const ScalingAxis after(10, 3, 10, 5);
  EXPECT_EQ(after.first_on_page(), 3U);
  EXPECT_EQ(after.count(), 2U);
  EXPECT_EQ(after.First(0), 0U);
  EXPECT_EQ(ScalingAxis(10, 5, 10, 5).count(), 0U);
  EXPECT_EQ(ScalingAxis(10, -10, 10, 5).count(), 0U);
}

TEST(ScalingAxis, WeightsAreAWholeAndStayInTheSource) {
  for (const uint32_t source : {1U, 2U, 3U, 7U, 66U, 67U, 1000U}) {
    for (const int64_t length : {1, 2, 3, 64, 67, 333, 100000}) {
      const ScalingAxis axis(source, -length / 3, length, 50);
      for (uint32_t i = 0; i < axis.count(); ++i) {
        const auto weights = axis.Weights(i);
        EXPECT_NEAR(std::accumulate(weights.begin(), weights.end(), 0.0), 1, 1e-4);
        ASSERT_LT(axis.Last(i), source);
      }
    }
  }
}

TEST(ScalingAxis, CountsHowManyDotsComeFromOne) {
  EXPECT_EQ(ScalingAxis(9, 0, 9, 9).MostAtOnce(), 1U);
  // 2.5 dots each: the third belongs to both.
  EXPECT_EQ(ScalingAxis(5, 0, 2, 2).MostAtOnce(), 2U);
  EXPECT_EQ(ScalingAxis(100000, 0, 3, 3).MostAtOnce(), 2U);
  // From one dot all come.
  EXPECT_EQ(ScalingAxis(1, 0, 70, 70).MostAtOnce(), 70U);
  // Three times the size: a dot's cubic reaches two dots to either side, 12 target dots.
  EXPECT_EQ(ScalingAxis(100, 0, 300, 300).MostAtOnce(), 12U);
}

}  // namespace
}  // namespace zr7700
