// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/ink_line.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "reference_engine/ink_line_paths.h"

namespace zr7700::reference_engine {
namespace {

// A table whose inks are the widened complements themselves: ink = 256 - 8 x node, at most 255.
std::vector<InkNode> ComplementTable() {
  std::vector<InkNode> nodes;
  const auto ink = [](uint32_t node) { return node == 0 ? 255 : 256 - 8 * node; };
  for (uint32_t red = 0; red < kTableNodes; ++red)
    for (uint32_t green = 0; green < kTableNodes; ++green)
      for (uint32_t blue = 0; blue < kTableNodes; ++blue)
        nodes.push_back(ink(red) | ink(green) << 8 | ink(blue) << 16);
  return nodes;
}

struct Codes {
  std::array<std::vector<uint8_t>, kPlanes> planes;
};
Codes LookUp(const std::vector<uint8_t>& pixels, const CellRun& run,
             decltype(&LookUpInks) path = LookUpInks) {
  static const std::vector<InkNode> table = ComplementTable();
  Codes codes;
  uint8_t* to[kPlanes];
  for (size_t plane = 0; plane < kPlanes; ++plane) {
    codes.planes[plane].assign(run.cells + 1, 77);
    to[plane] = codes.planes[plane].data();
  }
  path(pixels.data(), run, table.data(), to);
  return codes;
}

TEST(InkLineTest, WhiteAndBlackAreExactEverywhere) {
  std::vector<uint8_t> pixels(64 * 4, 255);
  for (size_t i = 32 * 4; i < pixels.size(); ++i) pixels[i] = 0;
  for (uint32_t line = 0; line < 8; ++line) {
    const Codes codes = LookUp(pixels, {line, 0, 1, 64});
    for (size_t plane = 0; plane < kPlanes; ++plane)
      for (size_t i = 0; i < 64; ++i) EXPECT_EQ(codes.planes[plane][i], i < 32 ? 0 : 255);
  }
}

TEST(InkLineTest, ColorsBetweenNodesComeOutOnAverage) {
  // 101, 150 (widened 151) and 203 (204) give inks 155, 105 and 52.
  std::vector<uint8_t> pixels;
  for (int i = 0; i < 64; ++i) pixels.insert(pixels.end(), {101, 150, 203, 0});
  std::array<double, kPlanes> sums = {};
  for (uint32_t line = 0; line < 8; ++line) {
    const Codes codes = LookUp(pixels, {line, 0, 1, 64});
    for (size_t plane = 0; plane < kPlanes; ++plane)
      for (size_t i = 0; i < 64; ++i) sums[plane] += codes.planes[plane][i];
  }
  EXPECT_DOUBLE_EQ(sums[kCyan] / 512, 155);
  EXPECT_DOUBLE_EQ(sums[kMagenta] / 512, 105);
  EXPECT_DOUBLE_EQ(sums[kYellow] / 512, 52);
}

std::vector<uint8_t> NoiseLine(size_t pixels) {
  std::vector<uint8_t> line(pixels * 4);
  uint32_t random = 7;
  for (uint8_t& byte : line) {
    random = random * 1664525 + 1013904223;
    byte = static_cast<uint8_t>(random >> 24);
  }
  return line;
}

TEST(InkLineTest, RunsOfColumnsAgreeWithTheWholeLine) {
  const std::vector<uint8_t> pixels = NoiseLine(600);
  const Codes whole = LookUp(pixels, {3, 0, 1, 600}, LookUpInksPlain);
  for (const uint32_t step : {1U, 2U, 4U, 8U})
    for (uint32_t cells = 0; cells <= 67; ++cells) {
      const Codes run = LookUp(pixels, {3, 13, step, cells}, LookUpInksPlain);
      for (size_t plane = 0; plane < kPlanes; ++plane) {
        for (uint32_t i = 0; i < cells; ++i)
          ASSERT_EQ(run.planes[plane][i], whole.planes[plane][13 + i * step]) << step << cells;
        EXPECT_EQ(run.planes[plane][cells], 77);
      }
    }
}

TEST(InkLineTest, TheFastPathEqualsThePlainOne) {
  if (!HasAvx2()) GTEST_SKIP() << "this processor has no AVX2";
  for (uint32_t cells = 0; cells <= 67; ++cells)
    for (const uint32_t step : {1U, 2U, 4U, 8U})
      for (uint32_t line = 0; line < 8; ++line) {
        // Exactly as many pixels as the run needs, so that reading on would be seen.
        const std::vector<uint8_t> pixels = NoiseLine(5 + cells * step);
        const CellRun run = {line, 5, step, cells};
        EXPECT_EQ(LookUp(pixels, run, LookUpInksAvx2).planes,
                  LookUp(pixels, run, LookUpInksPlain).planes)
            << cells << " " << step << " " << line;
      }
}

}  // namespace
}  // namespace zr7700::reference_engine
