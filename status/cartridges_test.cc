// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/cartridges.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "status/test_cartridges.h"
#include "status/test_records.h"
#include "tests/support/log_capture.h"

namespace zr7700 {
namespace {

using ::testing::ElementsAre;

bool IsKnown(int letter) {
  return letter == 'Q' || letter == 'P' || letter == 'U' || letter == 'V';
}

class KnownCartridge : public ::testing::TestWithParam<ExpectedCartridge> {};

TEST_P(KnownCartridge, HasItsInkLimits) {
  const Cartridge* cartridge = FindCartridge(GetParam().letter);
  ASSERT_NE(cartridge, nullptr);
  EXPECT_EQ(cartridge->letter, GetParam().letter);
  EXPECT_EQ(cartridge->ink_limit_low, GetParam().low);
  EXPECT_EQ(cartridge->ink_limit_high, GetParam().high);
}

TEST_P(KnownCartridge, PassesTheCheckWithItsOwnLogLine) {
  const test::LogCapture log;
  const CartridgeResult result = CheckCartridges(MakeRecord({.cartridge = GetParam().letter}));
  EXPECT_EQ(result.check, CartridgeCheck::kOk);
  EXPECT_EQ(result.cartridge, FindCartridge(GetParam().letter));
  EXPECT_THAT(log.Lines(), ElementsAre("In CheckCartridges", GetParam().log));
}

TEST_P(KnownCartridge, LogsAtTheLowestLevel) {
  const test::LogCapture log(1);
  CheckCartridges(MakeRecord({.cartridge = GetParam().letter}));
  EXPECT_EQ(log.Lines().size(), 2U);
}

TEST_P(KnownCartridge, IsEmptyOnlyAboveTheLimit) {
  const char letter = GetParam().letter;
  const uint32_t limit = GetParam().high;
  EXPECT_FALSE(IsInkEmpty(MakeRecord({.ink_count1 = limit, .cartridge = letter})));
  EXPECT_TRUE(IsInkEmpty(MakeRecord({.ink_count1 = limit + 1, .cartridge = letter})));
  EXPECT_TRUE(IsInkEmpty(MakeRecord({.ink_count2 = limit + 1, .cartridge = letter})));
  EXPECT_TRUE(IsInkEmpty(MakeRecord({.ink_count3 = limit + 1, .cartridge = letter})));
}

TEST_P(KnownCartridge, IsJudgedByItsLargestCountNotBySum) {
  const uint32_t half = GetParam().high / 2 + 1;
  EXPECT_FALSE(IsInkEmpty(MakeRecord({.ink_count1 = half,
                                      .ink_count2 = half,
                                      .ink_count3 = half,
                                      .cartridge = GetParam().letter})));
}

INSTANTIATE_TEST_SUITE_P(All, KnownCartridge, ::testing::ValuesIn(kExpectedCartridges),
                         [](const auto& tested) { return std::string(1, tested.param.letter); });

TEST(FindCartridge, KnowsNoOtherLetter) {
  for (int letter = 0; letter < 256; letter++) {
    if (IsKnown(letter)) continue;
    EXPECT_EQ(FindCartridge(static_cast<char>(letter)), nullptr) << letter;
  }
}

TEST(FindCartridge, StandardIsQ) { EXPECT_EQ(kStandardCartridge.letter, 'Q'); }

TEST(CheckCartridges, UpperBits2MeanNoCartridge) {
  for (int letter = 0x20; letter <= 0x2F; letter++) {
    const test::LogCapture log;
    const CartridgeResult result =
        CheckCartridges(MakeRecord({.cartridge = static_cast<char>(letter)}));
    EXPECT_EQ(result.check, CartridgeCheck::kMissing) << letter;
    EXPECT_EQ(result.cartridge, nullptr) << letter;
    EXPECT_THAT(log.Lines(),
                ElementsAre("In CheckCartridges", "CheckCartridges: No cartridges installed"));
  }
}

TEST(CheckCartridges, EveryOtherByteIsAnInvalidCartridge) {
  for (int letter = 0; letter < 256; letter++) {
    if (IsKnown(letter) || (letter & 0xF0) == 0x20) continue;
    const CartridgeResult result =
        CheckCartridges(MakeRecord({.cartridge = static_cast<char>(letter)}));
    EXPECT_EQ(result.check, CartridgeCheck::kInvalid) << letter;
    EXPECT_EQ(result.cartridge, nullptr) << letter;
  }
}

TEST(CheckCartridges, LogsAnInvalidCartridge) {
  const test::LogCapture log;
  CheckCartridges(MakeRecord({.cartridge = 'q'}));
  EXPECT_THAT(log.Lines(), ElementsAre("In CheckCartridges",
                                       "CheckCartridges: Invalid cartridges (CMY) installed"));
}

TEST(IsInkEmpty, IsFalseForAnyOtherCartridge) {
  for (int letter = 0; letter < 256; letter++) {
    if (IsKnown(letter)) continue;
    EXPECT_FALSE(
        IsInkEmpty(MakeRecord({.ink_count1 = 0xFFFFFFFF, .cartridge = static_cast<char>(letter)})))
        << letter;
  }
}

TEST(IsInkEmpty, JudgesTheQxCartridgeAboveTheSignedRange) {
  EXPECT_FALSE(IsInkEmpty(MakeRecord(
      {.ink_count1 = 3'000'000'000, .ink_count2 = 1, .ink_count3 = 1, .cartridge = 'V'})));
  EXPECT_TRUE(IsInkEmpty(MakeRecord(
      {.ink_count1 = 3'000'000'001, .ink_count2 = 1, .ink_count3 = 1, .cartridge = 'V'})));
}

}  // namespace
}  // namespace zr7700
