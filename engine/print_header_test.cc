// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/print_header.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zr7700 {
namespace {

using testing::ElementsAre;

TEST(InkWarningValue, IsTheLowLimitLessItsEighth) {
  JobVariables variables = {};
  variables.inkLimitLow = 190000000;
  variables.inkLimitHigh = 5;
  EXPECT_EQ(InkWarningValue(variables), 166250000u);
}

TEST(InkWarningValue, EighthIsRoundedDown) {
  JobVariables variables = {};
  const uint32_t expected[][2] = {{0, 0}, {7, 7}, {8, 7}, {15, 14}, {0xFFFFFFFF, 0xE0000000}};
  for (const auto& [low, warning] : expected) {
    variables.inkLimitLow = low;
    EXPECT_EQ(InkWarningValue(variables), warning) << low;
  }
}

TEST(InkWarningValue, IsTheHighLimitWhenTheCheckIsSkipped) {
  JobVariables variables = {};
  variables.SkipLowInkFWCheck = 1;
  variables.inkLimitLow = 8;
  variables.inkLimitHigh = 0xFFFFFFFF;
  EXPECT_EQ(InkWarningValue(variables), 0xFFFFFFFFu);
}

TEST(PrintHeader, OfAReadyPrinter) {
  JobVariables variables = {};
  variables.statusLetterReady = 1;
  variables.OutputDest = 7;
  EXPECT_THAT(BuildPrintHeader(variables, 166250000),
              ElementsAre(0x1B, 0x0B, 0x0E, 1, 1, 1, 0x09, 0xE8, 0xC6, 0x10, 0, 0, 0, 0, 0, 0xFE));
}

TEST(PrintHeader, WithoutAWarningValueEndsInTheTemplatesOwnByte) {
  JobVariables variables = {};
  variables.statusLetterReady = 1;
  EXPECT_THAT(BuildPrintHeader(variables, 0),
              ElementsAre(0x1B, 0x0B, 0x0E, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x37));
}

TEST(PrintHeader, OtherwiseTheDestinationIsTheSettingsLowByte) {
  JobVariables variables = {};
  variables.OutputDest = 0x1234;
  EXPECT_EQ(BuildPrintHeader(variables, 0)[5], 0x34);
  EXPECT_EQ(BuildPrintHeader(variables, 0)[15], 0x6A);  // 0x36 + 0x34
  variables.OutputDest = -1;
  EXPECT_EQ(BuildPrintHeader(variables, 0)[5], 0xFF);
  EXPECT_EQ(BuildPrintHeader(variables, 0)[15], 0x35);  // 0x36 + 0xFF
}

TEST(PrintHeader, ChecksumIsModulo256) {
  JobVariables variables = {};
  // 0x36 + 4 x 0xFF = 0x432.
  EXPECT_EQ(BuildPrintHeader(variables, 0xFFFFFFFF)[15], 0x32);
}

}  // namespace
}  // namespace zr7700
