// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/raster_header.h"

#include <gtest/gtest.h>

namespace zr7700 {
namespace {

cups_page_header2_t Line(uint32_t bytes, uint32_t bits_per_pixel) {
  cups_page_header2_t header = {};
  header.cupsBytesPerLine = bytes;
  header.cupsBitsPerPixel = bits_per_pixel;
  return header;
}

TEST(RasterHeader, ALineHasAtMost131072Pixels) {
  EXPECT_FALSE(IsLineTooLong(Line(393'216, 24)));
  EXPECT_FALSE(IsLineTooLong(Line(393'218, 24)));  // two bytes of another pixel
  EXPECT_TRUE(IsLineTooLong(Line(393'219, 24)));
  EXPECT_FALSE(IsLineTooLong(Line(131'072, 8)));
  EXPECT_TRUE(IsLineTooLong(Line(131'073, 8)));
  EXPECT_FALSE(IsLineTooLong(Line(0, 24)));
}

TEST(RasterHeader, PixelsBelowAByteCountAsBytes) {
  for (const uint32_t bits : {0U, 1U, 7U}) {
    EXPECT_FALSE(IsLineTooLong(Line(131'072, bits)));
    EXPECT_TRUE(IsLineTooLong(Line(131'073, bits)));
  }
}

// 15 colours of 16 bits are 30 bytes; 131,072 such pixels 3,932,160.
TEST(RasterHeader, PixelsOfAnySizeMakeNoLongerLineThanTheLargestRealOnes) {
  EXPECT_FALSE(IsLineTooLong(Line(3'932'160, 240)));
  EXPECT_FALSE(IsLineTooLong(Line(3'932'160, 0xFFFFFFFF)));
  EXPECT_TRUE(IsLineTooLong(Line(3'932'161, 0xFFFFFFFF)));
  EXPECT_TRUE(IsLineTooLong(Line(0xFFFFFFFF, 0xFFFFFFF8)));
}

TEST(RasterHeader, WhatIsNoRasterHasNoHeaders) {
  EXPECT_EQ(FormOfRaster({'%', 'P', 'D', 'F'}).header_bytes, 0U);
  EXPECT_EQ(FormOfRaster({}).header_bytes, 0U);
}

// A phone's raster tells bits, width and height; the length of a line follows.
TEST(RasterHeader, AShortHeaderTellsTheLengthOfALine) {
  std::array<unsigned char, kShortHeaderBytes> bytes = {};
  bytes[0] = 24;
  bytes[14] = 1;  // 256 pixels
  const RasterForm form = FormOfRaster({'U', 'N', 'I', 'R'});
  EXPECT_EQ(form.header_bytes, kShortHeaderBytes);
  EXPECT_TRUE(form.is_compressed);
  EXPECT_EQ(DecodeHeader(bytes, form).cupsBytesPerLine, 768U);
  bytes[12] = 0xFF;  // the line's bytes do not fit 32 bits
  EXPECT_TRUE(IsLineTooLong(DecodeHeader(bytes, form)));
}

}  // namespace
}  // namespace zr7700
