// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/picture.h"

#include <gtest/gtest.h>

#include <limits>

#include "picture_filter/test_pictures.h"

namespace zr7700 {
namespace {

TEST(PictureTest, Densities) {
  EXPECT_EQ(DensityPerInch(300, 150).across, 300);
  EXPECT_EQ(DensityPerInch(300, 150).down, 150);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double none : {0.0, -1.0, 0.5, 65536.0, nan}) {
    EXPECT_EQ(DensityPerInch(300, none).across, 200) << none;
    EXPECT_EQ(DensityPerInch(none, 300).down, 200) << none;
  }
}

TEST(PictureTest, ShapesOfDots) {
  EXPECT_EQ(DensityOfShape(4, 3).across, 200);
  EXPECT_EQ(DensityOfShape(4, 3).down, 150);
  EXPECT_EQ(DensityOfShape(0, 3).down, 200);
  EXPECT_EQ(DensityOfShape(1e-9, 3).down, 200);
}

TEST(PictureTest, LimitsOfDots) {
  EXPECT_EQ(CheckDots({.width = 1, .height = 1}), "");
  EXPECT_EQ(CheckDots({.width = 25000, .height = 10000}), "");
  EXPECT_EQ(CheckDots({.width = 131072, .height = 1}), "");
  EXPECT_NE(CheckDots({.width = 25000, .height = 10001}), "");
  EXPECT_NE(CheckDots({.width = 131073, .height = 1}), "");
  EXPECT_NE(CheckDots({.width = 0, .height = 1}), "");
  EXPECT_NE(CheckDots({.width = 4294967295, .height = 4294967295}), "");
}

TEST(PictureTest, LimitsOfMemory) {
  EXPECT_EQ(CheckHeldBytes(uint64_t{512} * 1024 * 1024), "");
  EXPECT_NE(CheckHeldBytes(uint64_t{512} * 1024 * 1024 + 1), "");
}

TEST(PictureTest, WhatIsNoPictureIsSaidToBeNone) {
  const std::string error = Decode({'%', 'P', 'D', 'F', '-', '1', '.', '7', '\n'}).error;
  EXPECT_NE(error.find("no PNG, JPEG or TIFF"), std::string::npos) << error;
  EXPECT_NE(Decode({'I', 'I', 42, 0}).error, "");
  EXPECT_NE(Decode({'M', 'M', 0, 43, 0, 8, 0, 0, 1}).error, "");
  EXPECT_NE(Decode({0xFF, 0xD8, 0xFF}).error, "");
}

}  // namespace
}  // namespace zr7700
