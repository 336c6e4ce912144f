// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/screen.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <new>
#include <ostream>
#include <vector>

#include "reference_engine/ink_model.h"
#include "reference_engine/test_failing_memory.h"

namespace zr7700::reference_engine {
namespace {

// The share of the mask's area that `code` covers, drop by drop.
double CoverageOf(const Screen& screen, Plane plane, uint8_t code,
                  const std::array<double, 3>& drops) {
  const std::vector<uint8_t> codes(kMaskSide, code);
  std::vector<uint8_t> levels(kMaskSide);
  double covered = 0;
  for (uint32_t line = 0; line < kMaskSide; ++line) {
    ScreenCells(codes.data(), screen.Row(line, 0, plane), kMaskSide, levels.data());
    for (const uint8_t level : levels)
      if (level != 0) covered += drops[level - 1U];
  }
  return covered / kMaskCells;
}

struct ScreenCase {
  Family family;
  uint32_t media;
  DropMixing mixing;
};

std::ostream& operator<<(std::ostream& out, const ScreenCase& screen_case) {
  return out << static_cast<char>(screen_case.family) << screen_case.media << " mixing "
             << static_cast<int>(screen_case.mixing);
}

class ScreenTest : public ::testing::TestWithParam<ScreenCase> {};
INSTANTIATE_TEST_SUITE_P(Media, ScreenTest,
                         ::testing::Values(ScreenCase{Family::kHeron, 1, DropMixing::kStandard},
                                           ScreenCase{Family::kHeron, 1, DropMixing::kPhoto},
                                           ScreenCase{Family::kGranite, 1, DropMixing::kStandard},
                                           ScreenCase{Family::kGranite, 2, DropMixing::kPhoto},
                                           ScreenCase{Family::kGranite, 8, DropMixing::kStandard}));

TEST_P(ScreenTest, DropsCoverWhatTheCodeStandsFor) {
  Screen screen;
  screen.Build({GetParam().family, GetParam().media, GetParam().mixing, 1});
  const auto drops = DropCoverages(GetParam().family, GetParam().media);
  for (const Plane plane : {kCyan, kMagenta, kYellow})
    for (int code = 0; code <= 255; ++code)
      EXPECT_NEAR(CoverageOf(screen, plane, static_cast<uint8_t>(code), drops),
                  CoverageOfCode(code), 2e-4)
          << code;
}

TEST(ScreenCellsTest, NoInkGivesNothingAndFullInkLargeDrops) {
  Screen screen;
  screen.Build({Family::kGranite, 1, DropMixing::kPhoto, 1});
  EXPECT_EQ(CoverageOf(screen, kCyan, 0, {1, 1, 1}), 0);
  EXPECT_EQ(CoverageOf(screen, kCyan, 255, {0, 0, 1}), 1);
}

TEST(ScreenCellsTest, ComparesCellByCellAtEveryLength) {
  ThresholdRow row;
  for (size_t i = 0; i < kMaskSide; ++i) {
    row.sizes[0][i] = static_cast<uint8_t>(i);
    row.sizes[1][i] = static_cast<uint8_t>(i + 60);
    row.sizes[2][i] = static_cast<uint8_t>(i + 120);
  }
  std::vector<uint8_t> codes(400);
  for (size_t i = 0; i < codes.size(); ++i) codes[i] = static_cast<uint8_t>(i * 37);
  for (const size_t cells : {size_t{127}, size_t{128}, size_t{129}, size_t{400}, size_t{0}}) {
    std::vector<uint8_t> levels(401, 9);
    ScreenCells(codes.data(), row, cells, levels.data());
    for (size_t i = 0; i < cells; ++i) {
      const size_t threshold = i % 128;
      const int expected = codes[i] > threshold + 120  ? 3
                           : codes[i] > threshold + 60 ? 2
                           : codes[i] > threshold      ? 1
                                                       : 0;
      ASSERT_EQ(levels[i], expected) << cells << " " << i;
    }
    EXPECT_EQ(levels[cells], 9);
  }
}

TEST(ScreenTest, PassesShareTheThresholdsOfOnePass) {
  Screen whole;
  whole.Build({Family::kGranite, 1, DropMixing::kStandard, 1});
  for (const uint32_t passes : {2U, 4U, 8U}) {
    Screen split;
    split.Build({Family::kGranite, 1, DropMixing::kStandard, passes});
    for (uint32_t column = 0; column < 512; ++column)
      for (size_t size = 0; size < 3; ++size)
        ASSERT_EQ(split.Row(5, column % passes, kMagenta).sizes[size][column / passes % 128],
                  whole.Row(5, 0, kMagenta).sizes[size][column % 128]);
  }
}

// The rows of one set of settings are as many as its passes ask for and equal to `expected`'s.
void ExpectSameRows(const Screen& screen, const Screen& expected, uint32_t passes) {
  for (uint32_t line = 0; line < kMaskSide; ++line)
    for (uint32_t phase = 0; phase < passes; ++phase)
      for (const Plane plane : {kCyan, kMagenta, kYellow})
        ASSERT_EQ(std::memcmp(&screen.Row(line, phase, plane), &expected.Row(line, phase, plane),
                              sizeof(ThresholdRow)),
                  0)
            << line << " " << phase;
}

TEST(ScreenTest, ALackOfMemoryLeavesRowsAndSettingsTogether) {
  const ScreenSettings kFew = {Family::kGranite, 1, DropMixing::kStandard, 1};
  const ScreenSettings kMany = {Family::kGranite, 1, DropMixing::kStandard, 8};
  Screen expected_few;
  expected_few.Build(kFew);
  Screen expected_many;
  expected_many.Build(kMany);
  Screen screen;
  screen.Build(kFew);
  int failures = 0;
  for (bool failed = true; failed; failures += failed) {
    const testing::FailingAllocation failing(failures + 1);
    try {
      screen.Build(kMany);
    } catch (const std::bad_alloc&) {
    }
    failed = failing.happened();
    ExpectSameRows(screen, failed ? expected_few : expected_many, failed ? 1 : 8);
  }
  EXPECT_GT(failures, 0);
}

TEST(BlueNoiseTest, EachMaskHoldsEachRankOnce) {
  for (const auto& mask : kBlueNoise) {
    std::vector<bool> seen(kMaskCells, false);
    for (const uint16_t rank : mask) {
      ASSERT_LT(rank, kMaskCells);
      EXPECT_FALSE(seen[rank]);
      seen[rank] = true;
    }
  }
}

TEST(BlueNoiseTest, DropsAreSpreadEvenly) {
  // A quarter of the cells, counted in squares of 8 x 8: random cells would vary by
  // 64 x 1/4 x 3/4 = 12 about their mean of 16.
  for (const auto& mask : kBlueNoise) {
    double variance = 0;
    for (int block = 0; block < 256; ++block) {
      int count = 0;
      for (int cell = 0; cell < 64; ++cell) {
        const int y = block / 16 * 8 + cell / 8;
        const int x = block % 16 * 8 + cell % 8;
        count += mask[y * kMaskSide + x] < kMaskCells / 4;
      }
      variance += (count - 16) * (count - 16) / 256.0;
    }
    EXPECT_LT(variance, 2);
  }
}

}  // namespace
}  // namespace zr7700::reference_engine
