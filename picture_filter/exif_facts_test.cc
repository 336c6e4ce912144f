// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/exif_facts.h"

#include <gtest/gtest.h>

#include "picture_filter/test_pictures.h"

namespace zr7700 {
namespace {

// 300 and 150 dots a `unit`, in the byte order of Motorola.
Bytes Resolutions(uint8_t unit, uint8_t denominator = 1) {
  return {'M', 'M',  0, 42, 0, 0, 0, 8,           0, 3,            //
          1,   0x1A, 0, 5,  0, 0, 0, 1,           0, 0,    0, 50,  //
          1,   0x1B, 0, 5,  0, 0, 0, 1,           0, 0,    0, 58,  //
          1,   0x28, 0, 3,  0, 0, 0, 1,           0, unit, 0, 0,   //
          0,   0,    0, 0,                                         //
          0,   0,    1, 44, 0, 0, 0, denominator, 0, 0,    0, 150, 0, 0, 0, denominator};
}

TEST(ExifFactsTest, Orientation) {
  EXPECT_EQ(ReadExif(ExifWith(kOrientationTag, 6)).turn, TurnOfOrientation(6));
  EXPECT_EQ(ReadExif(ExifWith(kOrientationTag, 0)).turn, Turn{});
  EXPECT_EQ(ReadExif(ExifWith(kOrientationTag, 77)).turn, Turn{});
  EXPECT_FALSE(ReadExif(ExifWith(kOrientationTag, 6)).density);
}

TEST(ExifFactsTest, APrefixMakesNoDifference) {
  Bytes exif = {'E', 'x', 'i', 'f', 0, 0};
  for (const uint8_t byte : ExifWith(kOrientationTag, 8)) exif.push_back(byte);
  EXPECT_EQ(ReadExif(exif).turn, TurnOfOrientation(8));
}

TEST(ExifFactsTest, Resolution) {
  ASSERT_TRUE(ReadExif(Resolutions(2)).density);
  EXPECT_EQ(ReadExif(Resolutions(2)).density->across, 300);
  EXPECT_EQ(ReadExif(Resolutions(2)).density->down, 150);
  EXPECT_NEAR(ReadExif(Resolutions(3)).density->across, 762, 0.01);
  EXPECT_FALSE(ReadExif(Resolutions(1)).density);
  EXPECT_FALSE(ReadExif(Resolutions(2, 0)).density);
}

TEST(ExifFactsTest, EveryCutIsTakenAsFarAsItGoes) {
  const Bytes whole = Resolutions(2);
  for (size_t bytes = 0; bytes < whole.size(); ++bytes) {
    EXPECT_EQ(ReadExif({whole.data(), bytes}).turn, Turn{}) << bytes;
  }
  EXPECT_FALSE(ReadExif({whole.data(), 40}).density);
}

}  // namespace
}  // namespace zr7700
