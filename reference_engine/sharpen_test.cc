// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/sharpen.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace zr7700::reference_engine {
namespace {

// Lines of equal bytes around the pixel under test: left, itself, right; above and below.
struct Neighbours {
  uint8_t left, itself, right, above, below;
};
uint8_t Sharpened(const Neighbours& n, int level) {
  std::array<uint8_t, 12> line;
  for (size_t i = 0; i < 4; ++i) {
    line[i] = n.left;
    line[4 + i] = n.itself;
    line[8 + i] = n.right;
  }
  const std::array<uint8_t, 4> above = {n.above, n.above, n.above, n.above};
  const std::array<uint8_t, 4> below = {n.below, n.below, n.below, n.below};
  std::array<uint8_t, 4> out = {};
  SharpenLine(above.data(), line.data() + 4, below.data(), 1, level, out.data());
  return out[2];
}

TEST(SharpenTest, FlatAreasKeepTheirColor) {
  for (int value = 0; value <= 255; ++value) {
    const auto v = static_cast<uint8_t>(value);
    EXPECT_EQ(Sharpened({v, v, v, v, v}, 12), v);
  }
}

TEST(SharpenTest, MovesAwayFromTheNeighbours) {
  // 4 x 100 - (100 + 100 + 100 + 84) = 16; 16 x 8 / 32 = 4.
  EXPECT_EQ(Sharpened({100, 100, 84, 100, 100}, 8), 104);
  EXPECT_EQ(Sharpened({100, 100, 116, 100, 100}, 8), 96);
  EXPECT_EQ(Sharpened({100, 100, 100, 84, 100}, 8), 104);
  EXPECT_EQ(Sharpened({100, 100, 100, 100, 84}, 8), 104);
  EXPECT_EQ(Sharpened({84, 100, 100, 100, 100}, 8), 104);
}

TEST(SharpenTest, ChangesByTheLevelAtMost) {
  for (int level = 1; level <= 12; ++level) {
    EXPECT_EQ(Sharpened({0, 128, 0, 0, 0}, level), 128 + level);
    EXPECT_EQ(Sharpened({255, 128, 255, 255, 255}, level), 128 - level);
  }
}

TEST(SharpenTest, WhiteStaysWhiteAndBlackBlack) {
  EXPECT_EQ(Sharpened({0, 255, 0, 0, 0}, 12), 255);
  EXPECT_EQ(Sharpened({255, 0, 255, 255, 255}, 12), 0);
  EXPECT_EQ(Sharpened({0, 250, 0, 0, 0}, 12), 255);
  EXPECT_EQ(Sharpened({255, 5, 255, 255, 255}, 12), 0);
}

TEST(SharpenTest, TreatsEveryPixelAlikeAtEveryWidth) {
  for (size_t width = 0; width <= 67; ++width) {
    std::vector<uint8_t> line((width + 2) * 4, 100);
    const std::vector<uint8_t> above(width * 4, 84);
    const std::vector<uint8_t> below(width * 4, 100);
    std::vector<uint8_t> out(width * 4 + 1, 7);
    SharpenLine(above.data(), line.data() + 4, below.data(), width, 8, out.data());
    std::vector<uint8_t> expected(width * 4, 104);
    expected.push_back(7);
    EXPECT_EQ(out, expected);
  }
}

}  // namespace
}  // namespace zr7700::reference_engine
