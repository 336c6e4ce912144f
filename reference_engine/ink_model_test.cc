// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/ink_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zr7700::reference_engine {
namespace {

using ::testing::DoubleNear;
using ::testing::Pointwise;

TEST(InkModelTest, BarePaperIsWhiteAndWhiteNeedsNoInk) {
  for (const Family family : {Family::kHeron, Family::kGranite}) {
    const InkSet& inks = InksFor(family, 1);
    EXPECT_EQ(MixInks(inks, {0, 0, 0}), (LinearColor{1, 1, 1}));
    EXPECT_EQ(SeparateInks(inks, {1, 1, 1}), (Coverages{0, 0, 0}));
  }
}

TEST(InkModelTest, InksMultiply) {
  const InkSet& inks = InksFor(Family::kGranite, 2);
  // Full cyan and half magenta: red 0.0025 x (1 - 0.5 x 0.012), green 0.98 x (1 - 0.5 x 0.9975),
  // blue 0.992 x (1 - 0.5 x 0.018).
  const LinearColor expected = {0.0025 * 0.994, 0.98 * 0.50125, 0.992 * 0.991};
  EXPECT_THAT(MixInks(inks, {1, 0.5, 0}), Pointwise(DoubleNear(1e-12), expected));
}

TEST(InkModelTest, SeparationUndoesTheMixture) {
  for (const uint32_t media : {1U, 2U, 7U})
    for (const Coverages& coverages : {Coverages{0.2, 0.5, 0.9}, Coverages{1, 0, 0.3},
                                       Coverages{0.99, 0.99, 0.99}, Coverages{0, 0.01, 0}}) {
      const InkSet& inks = InksFor(Family::kGranite, media);
      EXPECT_THAT(SeparateInks(inks, MixInks(inks, coverages)),
                  Pointwise(DoubleNear(1e-9), coverages));
    }
}

TEST(InkModelTest, ColorsOutOfReachTakeInksWithinBounds) {
  for (const double level : SeparateInks(InksFor(Family::kHeron, 1), {0, 0, 0}))
    EXPECT_EQ(level, 1);
  // Pure blue has no yellow in it although cyan and magenta swallow a little blue.
  EXPECT_EQ(SeparateInks(InksFor(Family::kHeron, 1), {0, 0, 1})[kYellow], 0);
}

TEST(InkModelTest, RimmedDiscsHaveTheirOwnInksOnGraniteOnly) {
  EXPECT_EQ(InksFor(Family::kGranite, 7), InksFor(Family::kGranite, 9));
  EXPECT_NE(InksFor(Family::kGranite, 7), InksFor(Family::kGranite, 2));
  EXPECT_EQ(InksFor(Family::kHeron, 7), InksFor(Family::kHeron, 1));
}

TEST(InkModelTest, TheSrgbCurveHasItsKnownPoints) {
  EXPECT_EQ(DecodeSrgb(0), 0);
  EXPECT_EQ(DecodeSrgb(1), 1);
  EXPECT_NEAR(DecodeSrgb(0.5), 0.21404, 1e-5);
  EXPECT_NEAR(EncodeSrgb(0.18), 0.46136, 1e-5);
}

TEST(InkModelTest, CodesAndCoveragesAreInverse) {
  EXPECT_EQ(CoverageOfCode(0), 0);
  EXPECT_EQ(CoverageOfCode(255), 1);
  for (int code = 0; code <= 255; ++code)
    EXPECT_NEAR(CodeOfCoverage(CoverageOfCode(code)), code, 1e-4);
}

}  // namespace
}  // namespace zr7700::reference_engine
