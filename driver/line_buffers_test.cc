// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/line_buffers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/support/log_capture.h"

namespace zr7700 {
namespace {

using ::testing::ElementsAre;

cups_page_header2_t Header(uint32_t bytes_per_line, uint32_t bits_per_pixel) {
  cups_page_header2_t header = {};
  header.cupsBytesPerLine = bytes_per_line;
  header.cupsBitsPerPixel = bits_per_pixel;
  return header;
}

std::string AddressOf(const void* bytes) {
  char text[32];
  snprintf(text, sizeof text, "%p", bytes);
  return text;
}

TEST(LineBuffersTest, WidenEveryPixelToFourBytes) {
  LineBuffers buffers;
  ASSERT_TRUE(buffers.Allocate(Header(6, 24)));
  ASSERT_EQ(buffers.pixel_count(), 2U);
  const uint8_t line[] = {10, 20, 30, 40, 50, 60};
  std::copy_n(line, sizeof line, buffers.line());
  buffers.Widen();
  EXPECT_THAT(std::vector<uint8_t>(buffers.rgbm(), buffers.rgbm() + 8),
              ElementsAre(10, 20, 30, 0, 40, 50, 60, 0));
}

TEST(LineBuffersTest, WidenAtEveryWidth) {
  for (uint32_t width = 0; width <= 67; width++) {
    LineBuffers buffers;
    ASSERT_TRUE(buffers.Allocate(Header(width * 3, 24)));
    ASSERT_EQ(buffers.pixel_count(), width);
    for (uint32_t i = 0; i < width * 3; i++) buffers.line()[i] = static_cast<uint8_t>(i + 1);
    buffers.Widen();
    for (uint32_t i = 0; i < width * 4; i++) {
      const uint32_t color = i % 4;
      const int expected = color == 3 ? 0 : static_cast<uint8_t>(i / 4 * 3 + color + 1);
      EXPECT_EQ(int{buffers.rgbm()[i]}, expected) << width << " " << i;
    }
  }
}

TEST(LineBuffersTest, WidenAnotherLineOverTheFirst) {
  LineBuffers buffers;
  ASSERT_TRUE(buffers.Allocate(Header(3, 24)));
  std::fill_n(buffers.rgbm(), 4, uint8_t{0xEE});
  std::fill_n(buffers.line(), 3, uint8_t{7});
  buffers.Widen();
  EXPECT_THAT(std::vector<uint8_t>(buffers.rgbm(), buffers.rgbm() + 4), ElementsAre(7, 7, 7, 0));
}

struct Size {
  uint32_t bytes_per_line;
  uint32_t bits_per_pixel;
  uint32_t pixels;  // bytes / (bits / 8), both without their rest
};

class PixelSize : public ::testing::TestWithParam<Size> {};

TEST_P(PixelSize, IsCountedInWholeBytes) {
  LineBuffers buffers;
  ASSERT_TRUE(buffers.Allocate(Header(GetParam().bytes_per_line, GetParam().bits_per_pixel)));
  EXPECT_EQ(buffers.pixel_count(), GetParam().pixels);
}

// Read as 3 bytes a pixel whatever its size; bytes beyond the line count as 0.
TEST_P(PixelSize, IsReadAsThreeBytes) {
  LineBuffers buffers;
  ASSERT_TRUE(buffers.Allocate(Header(GetParam().bytes_per_line, GetParam().bits_per_pixel)));
  const auto byte_at = [](uint32_t i) { return static_cast<uint8_t>(i * 7 + 1); };
  for (uint32_t i = 0; i < GetParam().bytes_per_line; i++) buffers.line()[i] = byte_at(i);
  buffers.Widen();
  for (uint32_t i = 0; i < GetParam().pixels * 4; i++) {
    const uint32_t source = i / 4 * 3 + i % 4;
    const bool is_set = i % 4 != 3 && source < GetParam().bytes_per_line;
    EXPECT_EQ(buffers.rgbm()[i], is_set ? byte_at(source) : 0) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(All, PixelSize,
                         ::testing::Values(Size{30, 8, 30}, Size{30, 16, 15}, Size{30, 24, 10},
                                           Size{32, 32, 8}, Size{30, 48, 5}, Size{31, 24, 10},
                                           Size{32, 24, 10}, Size{2, 24, 0}, Size{30, 15, 30},
                                           Size{30, 31, 10}, Size{33, 64, 4}, Size{0, 24, 0}));

TEST(LineBuffersTest, LogTheLinesAddressForBoth) {
  const test::LogCapture log;
  LineBuffers buffers;
  ASSERT_TRUE(buffers.Allocate(Header(300, 24)));
  const std::string address = AddressOf(buffers.line());
  EXPECT_THAT(log.Lines(),
              ElementsAre("     Allocated line buffer 300 bytes at " + address + "!",
                          "     Allocated rgbmline buffer 400 bytes at " + address + "!"));
}

TEST(LineBuffersTest, RefuseAPixelBelowAByte) {
  for (const uint32_t bits : {0U, 1U, 7U}) {
    const test::LogCapture log(1);
    LineBuffers buffers;
    EXPECT_FALSE(buffers.Allocate(Header(300, bits)));
    ASSERT_FALSE(log.Lines().empty());
    EXPECT_EQ(log.Lines().back(), "     Bad cupsBitsPerPixel=" + std::to_string(bits) + "!");
  }
}

TEST(LineBuffersTest, RefuseALineOf131073Pixels) {
  const test::LogCapture log(1);
  LineBuffers buffers;
  EXPECT_FALSE(buffers.Allocate(Header(393'219, 24)));
  EXPECT_THAT(log.Lines(), ElementsAre("     Unable to allocate 393219 bytes!"));
}

TEST(LineBuffersTest, RefuseTheLongestLine) {
  const test::LogCapture log;
  LineBuffers buffers;
  EXPECT_FALSE(buffers.Allocate(Header(4'294'967'295, 8)));
  EXPECT_THAT(log.Lines(), ElementsAre("     Unable to allocate 4294967295 bytes!"));
}

TEST(LineBuffersTest, TakeALineOf131072Pixels) {
  LineBuffers buffers;
  ASSERT_TRUE(buffers.Allocate(Header(393'216, 24)));
  EXPECT_EQ(buffers.pixel_count(), 131'072U);
  buffers.line()[393'215] = 9;
  buffers.Widen();
  EXPECT_EQ(buffers.rgbm()[524'286], 9);
}

TEST(LineBuffersTest, AsManyWidePixelsAreTaken) {
  LineBuffers buffers;
  ASSERT_TRUE(buffers.Allocate(Header(131'072 * 30, 240)));
  EXPECT_EQ(buffers.pixel_count(), 131'072U);
  buffers.Widen();
}

TEST(LineBuffersTest, CanBeAllocatedAgain) {
  LineBuffers buffers;
  ASSERT_TRUE(buffers.Allocate(Header(300, 24)));
  ASSERT_TRUE(buffers.Allocate(Header(30, 24)));
  EXPECT_EQ(buffers.pixel_count(), 10U);
}

}  // namespace
}  // namespace zr7700
