// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/margins.h"

#include "base/settings.h"
#include "tests/support/job_test.h"

namespace zr7700 {
namespace {

using testing::ElementsAre;

constexpr char kEntered[] = "     In ripGetMarginWidth";
constexpr char kWarning[] = "     WARN:  ripGetMarginWidth() < 0!";
constexpr char kDraft[] = "     Draft Mode set Margin to 300 dpi units";

class MarginsTest : public test::JobTest {
 protected:
  MarginsTest() {
    variables_.DiscSurfaceQuality = 1;
    variables_.horzResolution = 600;
  }

  JobVariables variables_ = {};
};

TEST_F(MarginsTest, PrintersOwnMargin) {
  EXPECT_EQ(ripGetMarginWidth(variables_), 1916);
  EXPECT_THAT(LogLines(), ElementsAre(kEntered, "     Margin Width 1916"));
}

TEST_F(MarginsTest, GraniteTakesItsOffsetAndOnHighQualityMedia14DotsLess) {
  settings.LeftMarginOffset = 10;
  settings.LeftMarginOffsetHeron = 1000;
  settings.LeftMarginOffsetHeronHighQuality = 2000;
  const int32_t expected[] = {1926, 1926, 1926, 1912, 1912, 1912, 1926};
  for (uint8_t medium = 0; medium < 7; ++medium) {
    variables_.DiscSurfaceQuality = medium;
    EXPECT_EQ(ripGetMarginWidth(variables_), expected[medium]) << int{medium};
  }
}

TEST_F(MarginsTest, SemiGlossOnGranite) {
  variables_.DiscSurfaceQuality = 4;
  EXPECT_EQ(ripGetMarginWidth(variables_), 1902);
}

TEST_F(MarginsTest, HeronTakesTheOffsetOfItsMediumWhateverThePrintQuality) {
  variables_.isHeron = 1;
  settings.LeftMarginOffset = 1000;
  settings.LeftMarginOffsetHeron = 10;
  settings.LeftMarginOffsetHeronHighQuality = 20;
  const int32_t expected[] = {1926, 1926, 1926, 1936, 1936, 1936, 1926};
  for (uint8_t quality = 0; quality < 6; ++quality) {
    variables_.PrintQuality = quality;
    for (uint8_t medium = 0; medium < 7; ++medium) {
      variables_.DiscSurfaceQuality = medium;
      EXPECT_EQ(ripGetMarginWidth(variables_), expected[medium]) << int{medium};
    }
  }
}

TEST_F(MarginsTest, NegativeMarginWarnsAndBecomesZero) {
  variables_.isHeron = 1;
  settings.LeftMarginOffsetHeron = -2000;
  EXPECT_EQ(ripGetMarginWidth(variables_), 0);
  EXPECT_THAT(LogLines(), ElementsAre(kEntered, kWarning, "     Margin Width 0"));
}

TEST_F(MarginsTest, ZeroWarnsTooAndOneDoesNot) {
  settings.LeftMarginOffset = -1916;
  EXPECT_EQ(ripGetMarginWidth(variables_), 0);
  settings.LeftMarginOffset = -1915;
  EXPECT_EQ(ripGetMarginWidth(variables_), 1);
  EXPECT_THAT(LogLines(), ElementsAre(kEntered, kWarning, "     Margin Width 0", kEntered,
                                      "     Margin Width 1"));
}

TEST_F(MarginsTest, DraftHalvesTheMargin) {
  variables_.horzResolution = 300;
  EXPECT_EQ(ripGetMarginWidth(variables_), 958);
  EXPECT_THAT(LogLines(), ElementsAre(kEntered, kDraft, "     Margin Width 958"));
}

TEST_F(MarginsTest, DraftWarnsBeforeItHalves) {
  variables_.horzResolution = 300;
  settings.LeftMarginOffset = -1915;
  EXPECT_EQ(ripGetMarginWidth(variables_), 0);  // 1 >> 1, without a warning
  settings.LeftMarginOffset = -3000;
  EXPECT_EQ(ripGetMarginWidth(variables_), 0);
  EXPECT_THAT(LogLines(), ElementsAre(kEntered, kDraft, "     Margin Width 0", kEntered, kWarning,
                                      kDraft, "     Margin Width 0"));
}

TEST_F(MarginsTest, HugeOffsetWrapsAndIsNoMargin) {
  settings.LeftMarginOffset = INT32_MAX;
  EXPECT_EQ(ripGetMarginWidth(variables_), 0);
}

TEST_F(MarginsTest, EntryIsATraceAndTheMarginADetail) {
  variables_.horzResolution = 300;
  settings.LeftMarginOffset = -3000;
  for (const int threshold : {1, 2, 3, 4}) {
    const test::LogCapture log(threshold);
    EXPECT_EQ(ripGetMarginWidth(variables_), 0);
    EXPECT_THAT(log.Lines(), ElementsAre(kWarning, kDraft, "     Margin Width 0")) << threshold;
  }
}

}  // namespace
}  // namespace zr7700
