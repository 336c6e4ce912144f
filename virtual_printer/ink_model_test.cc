// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/ink_model.h"

#include <gtest/gtest.h>

namespace zr7700::printer {
namespace {

TEST(InkModel, PaperIsWhite) {
  for (const uint8_t media : std::initializer_list<uint8_t>{1, 2, 7, 8, 9}) {
    EXPECT_EQ(DotLights(Family::kGranite, media)[0], (Light{1, 1, 1}));
  }
}

TEST(InkModel, OneDropByHand) {
  // A medium magenta drop of Granite on media 2: 1 - 0.70 * (1 - T), T = 0.988 0.0025 0.982.
  const Light light = DotLights(Family::kGranite, 2)[2 << 2];
  EXPECT_NEAR(light[0], 0.9916, 1e-12);
  EXPECT_NEAR(light[1], 0.30175, 1e-12);
  EXPECT_NEAR(light[2], 0.9874, 1e-12);
}

TEST(InkModel, InksMultiply) {
  // Heron: a large cyan, small magenta (0.38) and medium yellow (0.74) drop.
  const Light light = DotLights(Family::kHeron, 7)[3 | 1 << 2 | 2 << 4];
  EXPECT_NEAR(light[0], 0.0020 * (1 - 0.38 * 0.010) * (1 - 0.74 * 0.005), 1e-12);
  EXPECT_NEAR(light[1], 0.985 * (1 - 0.38 * 0.998) * (1 - 0.74 * 0.010), 1e-12);
  EXPECT_NEAR(light[2], 0.995 * (1 - 0.38 * 0.015) * (1 - 0.74 * 0.998), 1e-12);
}

TEST(InkModel, MediaChangeTheDrops) {
  // Small cyan drops: red light 1 - a * (1 - T).
  EXPECT_NEAR(DotLights(Family::kGranite, 1)[1][0], 1 - 0.36 * 0.9975, 1e-12);
  EXPECT_NEAR(DotLights(Family::kGranite, 2)[1][0], 1 - 0.34 * 0.9975, 1e-12);
  for (const uint8_t media : std::initializer_list<uint8_t>{7, 8, 9}) {
    EXPECT_NEAR(DotLights(Family::kGranite, media)[1][0], 1 - 0.30 * 0.9988, 1e-12);
    EXPECT_NEAR(DotLights(Family::kHeron, media)[1][0], 1 - 0.38 * 0.998, 1e-12);
  }
}

TEST(InkModel, SrgbCurve) {
  EXPECT_EQ(ToSrgb({0, 1, 2}), (Rgb{0, 255, 255}));
  // 0.5 of the light is 187.5 steps of 255; 0.0025 lies on the straight part: 12.92 * 0.0025 * 255.
  EXPECT_EQ(ToSrgb({0.5, 0.0025, 0.2140}), (Rgb{188, 8, 127}));
}

}  // namespace
}  // namespace zr7700::printer
