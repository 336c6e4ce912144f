// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/ppd_choices.h"

#include <cups/cups.h>

#include <cstring>

#include "tests/support/job_test.h"
#include "tests/support/marked_ppd.h"

namespace zr7700 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Choices = test::MarkedPpd::Choices;

class PpdChoicesTest : public test::JobTest {
 protected:
  PpdChoicesTest() { memset(static_cast<void*>(&variables_), 0x55, sizeof variables_); }

  // The record, filled with 0x55 before, after the choices have been read.
  const JobVariables& Read(const Choices& choices) {
    const test::MarkedPpd ppd(choices);
    ReadDiscChoices(ppd.get(), variables_);
    ReadPrintChoices(ppd.get(), variables_);
    return variables_;
  }

  JobVariables variables_ = {};
};

TEST_F(PpdChoicesTest, WithoutMarkedChoicesOnlyTheDirectionIsSet) {
  Read({});
  EXPECT_EQ(variables_.InnerDiam, 0x55555555u);
  EXPECT_EQ(variables_.InkSaturation, 0x55);
  EXPECT_EQ(variables_.OuterMargin, 0x55555555u);
  EXPECT_EQ(variables_.DiscSurfaceQuality, 0x55);
  EXPECT_EQ(variables_.PrintQuality, 0x55);
  EXPECT_EQ(variables_.ColorMatching, 0x55);
  EXPECT_EQ(variables_.bidirectional, 1);
  EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(PpdChoicesTest, EveryChoiceIsLoggedInOrder) {
  Read({{"Bidi", "Yes"},
        {"ColorMatching", "BestForPhotos"},
        {"PrintQuality", "Quality3"},
        {"MediaType", "SemiGloss"},
        {"OuterMargin", "10"},
        {"Saturation", "90"},
        {"InnerDiameter", "220"}});
  EXPECT_THAT(LogLines(),
              ElementsAre("   InnerDiameterChoice : 220", "   SaturationChoice : 90",
                          "   OuterMarginChoice : 10", "   MediaTypeChoice : SemiGloss",
                          "   PrintQualityChoice : Quality3",
                          "   ColorMatchingChoice : BestForPhotos", "   BidiChoice : Yes"));
}

TEST_F(PpdChoicesTest, InnerDiameterIsKeptInTenthsOfAMillimetre) {
  EXPECT_EQ(Read({{"InnerDiameter", "220"}}).InnerDiam, 220u);
  EXPECT_EQ(Read({{"InnerDiameter", "-5"}}).InnerDiam, static_cast<uint32_t>(-5));
  EXPECT_EQ(Read({{"InnerDiameter", "18mm"}}).InnerDiam, 18u);
  EXPECT_EQ(Read({{"InnerDiameter", "None"}}).InnerDiam, 0u);
}

TEST_F(PpdChoicesTest, SaturationIsTheNumbersLowByte) {
  EXPECT_EQ(Read({{"Saturation", "120"}}).InkSaturation, 120);
  EXPECT_EQ(Read({{"Saturation", "300"}}).InkSaturation, 44);
  EXPECT_EQ(Read({{"Saturation", "-1"}}).InkSaturation, 255);
}

TEST_F(PpdChoicesTest, OuterMarginIsTurnedIntoDotsAndCutTowardZero) {
  EXPECT_EQ(Read({{"OuterMargin", "3"}}).OuterMargin, 7u);
  EXPECT_EQ(Read({{"OuterMargin", "-3"}}).OuterMargin, static_cast<uint32_t>(-7));
  EXPECT_EQ(Read({{"OuterMargin", "254"}}).OuterMargin, 600u);
  EXPECT_EQ(Read({{"OuterMargin", "0"}}).OuterMargin, 0u);
  // 7158279 x 600 is 4294967400, 104 modulo 2^32.
  EXPECT_EQ(Read({{"OuterMargin", "7158279"}}).OuterMargin, 0u);
  // 4000000 x 600 is 2400000000, -1894967296 as signed; over 254 that is -7460501.16.
  EXPECT_EQ(Read({{"OuterMargin", "4000000"}}).OuterMargin, static_cast<uint32_t>(-7460501));
}

TEST_F(PpdChoicesTest, MediaTypes) {
  const std::pair<const char*, int> expected[] = {
      {"HighGloss", 1}, {"HighGloss2", 2},     {"WhitePolyester", 3},
      {"SemiGloss", 4}, {"WhiteMatteBOPP", 5}, {"Matte", 5},
      {"highgloss", 5}, {"HighGloss22", 5},    {"High", 5}};
  for (const auto& [keyword, value] : expected) {
    EXPECT_EQ(Read({{"MediaType", keyword}}).DiscSurfaceQuality, value) << keyword;
  }
}

TEST_F(PpdChoicesTest, PrintQualities) {
  const std::pair<const char*, int> expected[] = {{"Quality1", 1}, {"Quality2", 2}, {"Quality3", 3},
                                                  {"Quality4", 4}, {"quality1", 4}, {"Best", 4}};
  for (const auto& [keyword, value] : expected) {
    EXPECT_EQ(Read({{"PrintQuality", keyword}}).PrintQuality, value) << keyword;
  }
}

TEST_F(PpdChoicesTest, ColorMatchings) {
  EXPECT_EQ(Read({{"ColorMatching", "BestForPhotos"}}).ColorMatching, 2);
  EXPECT_EQ(Read({{"ColorMatching", "Standard"}}).ColorMatching, 1);
  EXPECT_EQ(Read({{"ColorMatching", "bestforphotos"}}).ColorMatching, 1);
}

TEST_F(PpdChoicesTest, Directions) {
  EXPECT_EQ(Read({{"Bidi", "Yes"}}).bidirectional, 1);
  EXPECT_EQ(Read({{"Bidi", "No"}}).bidirectional, 0);
  EXPECT_EQ(Read({{"Bidi", "yes"}}).bidirectional, 0);
  EXPECT_EQ(Read({}).bidirectional, 1);
}

TEST_F(PpdChoicesTest, JobOptionOverridesThePpdsDefault) {
  const test::MarkedPpd ppd({{"PrintQuality", "Quality1"}, {"PrintQuality", "Quality3"}});
  cups_option_t option = {const_cast<char*>("PrintQuality"), const_cast<char*>("Quality3")};
  cupsMarkOptions(ppd.get(), 1, &option);
  ReadPrintChoices(ppd.get(), variables_);
  EXPECT_EQ(variables_.PrintQuality, 3);
}

TEST_F(PpdChoicesTest, ChoicesAreMilestones) {
  const Choices choices = {{"InnerDiameter", "220"},
                           {"Saturation", "90"},
                           {"OuterMargin", "3"},
                           {"MediaType", "HighGloss"},
                           {"PrintQuality", "Quality1"},
                           {"ColorMatching", "Standard"},
                           {"Bidi", "No"}};
  for (const int threshold : {1, 2, 3, 4}) {
    const test::LogCapture log(threshold);
    Read(choices);
    if (threshold < 3) {
      EXPECT_THAT(log.Lines(), IsEmpty()) << threshold;
    } else {
      EXPECT_THAT(log.Lines(),
                  ElementsAre("   InnerDiameterChoice : 220", "   SaturationChoice : 90",
                              "   OuterMarginChoice : 3", "   MediaTypeChoice : HighGloss",
                              "   PrintQualityChoice : Quality1",
                              "   ColorMatchingChoice : Standard", "   BidiChoice : No"));
    }
  }
}

}  // namespace
}  // namespace zr7700
