// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "page_fitter/pixel_form.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace zr7700 {
namespace {

using ::testing::ElementsAre;

cups_page_header2_t HeaderOf(cups_cspace_t space, unsigned bits_per_color, unsigned bits_per_pixel,
                             cups_order_t order = CUPS_ORDER_CHUNKED) {
  cups_page_header2_t header = {};
  header.cupsColorSpace = space;
  header.cupsBitsPerColor = bits_per_color;
  header.cupsBitsPerPixel = bits_per_pixel;
  header.cupsColorOrder = order;
  return header;
}

TEST(PixelFormOf, KnowsEightBitGreyAndRgb) {
  EXPECT_EQ(PixelFormOf(HeaderOf(CUPS_CSPACE_RGB, 8, 24)), PixelForm::kRgb);
  EXPECT_EQ(PixelFormOf(HeaderOf(CUPS_CSPACE_SRGB, 8, 24)), PixelForm::kRgb);
  EXPECT_EQ(PixelFormOf(HeaderOf(CUPS_CSPACE_W, 8, 8)), PixelForm::kWhite);
  EXPECT_EQ(PixelFormOf(HeaderOf(CUPS_CSPACE_SW, 8, 8)), PixelForm::kWhite);
  EXPECT_EQ(PixelFormOf(HeaderOf(CUPS_CSPACE_K, 8, 8)), PixelForm::kBlack);
}

TEST(PixelFormOf, RefusesAllElse) {
  EXPECT_EQ(PixelFormOf(HeaderOf(CUPS_CSPACE_RGB, 16, 48)), PixelForm::kUnknown);
  EXPECT_EQ(PixelFormOf(HeaderOf(CUPS_CSPACE_RGB, 8, 32)), PixelForm::kUnknown);
  EXPECT_EQ(PixelFormOf(HeaderOf(CUPS_CSPACE_RGB, 8, 24, CUPS_ORDER_PLANAR)), PixelForm::kUnknown);
  EXPECT_EQ(PixelFormOf(HeaderOf(CUPS_CSPACE_CMYK, 8, 32)), PixelForm::kUnknown);
  EXPECT_EQ(PixelFormOf(HeaderOf(CUPS_CSPACE_K, 1, 1)), PixelForm::kUnknown);
  EXPECT_EQ(PixelFormOf(HeaderOf(CUPS_CSPACE_ADOBERGB, 8, 24)), PixelForm::kUnknown);
}

std::vector<uint8_t> Rgb(PixelForm form, const std::vector<uint8_t>& line, size_t dots) {
  std::vector<uint8_t> rgb(dots * 3);
  ToRgb(form, line, rgb);
  return rgb;
}

TEST(ToRgb, CopiesColoursAndWidensGreys) {
  EXPECT_THAT(Rgb(PixelForm::kRgb, {1, 2, 3, 4, 5, 6, 99}, 2), ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_THAT(Rgb(PixelForm::kWhite, {0, 255}, 2), ElementsAre(0, 0, 0, 255, 255, 255));
  EXPECT_THAT(Rgb(PixelForm::kBlack, {0, 200}, 2), ElementsAre(255, 255, 255, 55, 55, 55));
}

TEST(ToGrey, WeighsTheThreeAsTheEyeDoes) {
  std::vector<uint8_t> rgb = {255, 255, 255, 0, 0, 0, 100, 0, 0, 0, 100, 0, 0, 0, 100};
  ToGrey(rgb);
  EXPECT_THAT(rgb, ElementsAre(255, 255, 255, 0, 0, 0, 31, 31, 31, 61, 61, 61, 8, 8, 8));
}

}  // namespace
}  // namespace zr7700
