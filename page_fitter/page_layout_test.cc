// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "page_fitter/page_layout.h"

#include <gtest/gtest.h>

#include <limits>

namespace zr7700 {
namespace {

// The page of a 120 mm disc at 600 dpi: 2834 dots, 340.08 points.
TargetPage Disc() {
  TargetPage target = {};
  target.header.cupsWidth = target.header.cupsHeight = 2834;
  target.header.HWResolution[0] = target.header.HWResolution[1] = 600;
  return target;
}

cups_page_header2_t Raster(unsigned width, unsigned height, unsigned dpi) {
  cups_page_header2_t header = {};
  header.cupsWidth = width;
  header.cupsHeight = height;
  header.HWResolution[0] = header.HWResolution[1] = dpi;
  return header;
}

void SetPage(cups_page_header2_t& header, unsigned width, unsigned height) {
  header.PageSize[0] = width;
  header.PageSize[1] = height;
}

void SetBox(cups_page_header2_t& header, unsigned left, unsigned bottom, unsigned right,
            unsigned top) {
  const unsigned box[] = {left, bottom, right, top};
  std::copy_n(box, 4, header.ImagingBoundingBox);
}

Place LaidOut(const cups_page_header2_t& header, Scaling scaling = Scaling::kUnset,
              Position position = {}) {
  return LayOut(header, Disc(), scaling, position);
}

TEST(LayOut, APageThatFitsStaysWhereItIs) {
  auto header = Raster(2834, 2834, 600);
  EXPECT_EQ(LaidOut(header), (Place{0, 0, 2834, 2834}));
  SetPage(header, 340, 340);
  SetBox(header, 0, 0, 340, 340);
  EXPECT_EQ(LaidOut(header), (Place{0, 0, 2834, 2834}));
}

TEST(LayOut, APictureInTheMiddleOfThePageGoesToTheMiddle) {
  // Whole points tell the place to 8 dots only.
  auto header = Raster(1417, 2834, 600);
  SetPage(header, 340, 340);
  SetBox(header, 85, 0, 255, 340);
  EXPECT_EQ(LaidOut(header), (Place{708, 0, 1417, 2834}));
  SetBox(header, 86, 0, 256, 340);
  EXPECT_EQ(LaidOut(header), (Place{708, 0, 1417, 2834}));
}

TEST(LayOut, WithoutABoxItGoesToTheMiddle) {
  auto header = Raster(1000, 500, 600);
  SetPage(header, 340, 340);
  EXPECT_EQ(LaidOut(header), (Place{917, 1167, 1000, 500}));
}

TEST(LayOut, AnExactBoxCountsBeforeTheOneInWholePoints) {
  // 600 x 300 dots are 72 x 36 points, in the upper left corner of 340 points.
  auto header = Raster(600, 300, 600);
  SetPage(header, 340, 340);
  SetBox(header, 134, 152, 206, 188);
  const float exact[] = {0, 304, 72, 340};
  std::copy_n(exact, 4, header.cupsImagingBBox);
  // The page is 340 points, the disc 340.08: its middle is 1417 dots, and the box's middle is 134
  // points left of the page's: 1417 - 134 x 600 / 72 - 300 = 0.33. 152 points up: 0.33 too.
  EXPECT_EQ(LaidOut(header), (Place{0, 0, 600, 300}));
}

TEST(LayOut, ABoxThatLiesIsTheMiddle) {
  auto header = Raster(600, 600, 600);
  SetPage(header, 340, 340);
  SetBox(header, 4000000000, 0, 4000000010, 4000000000);
  EXPECT_EQ(LaidOut(header), (Place{1117, 1117, 600, 600}));
  const float nan = std::numeric_limits<float>::quiet_NaN();
  header.cupsImagingBBox[0] = nan;
  header.cupsImagingBBox[2] = std::numeric_limits<float>::infinity();
  header.cupsPageSize[0] = nan;
  header.cupsPageSize[1] = -1e38F;
  EXPECT_EQ(LaidOut(header), (Place{1117, 1117, 600, 600}));
}

TEST(LayOut, TheDiscsPageOfAnotherResolutionIsScaledToIt) {
  auto header = Raster(1417, 1417, 300);
  SetPage(header, 340, 340);
  EXPECT_EQ(LaidOut(header), (Place{0, 0, 2834, 2834}));
  header = Raster(1417, 2834, 300);
  header.HWResolution[1] = 600;
  EXPECT_EQ(LaidOut(header), (Place{0, 0, 2834, 2834}));
}

TEST(LayOut, TheDiscsPageKeepsItsLayoutWhateverTheScaling) {
  auto header = Raster(600, 600, 600);
  SetPage(header, 340, 340);
  for (const Scaling scaling : {Scaling::kAuto, Scaling::kFit, Scaling::kFill, Scaling::kNone}) {
    EXPECT_EQ(LaidOut(header, scaling), (Place{1117, 1117, 600, 600}));
  }
}

TEST(LayOut, ALargerPageBecomesSmaller) {
  // A4 at 300 dpi; 340.08 / 842 = 0.4039; 2480 x 0.4039 x 2 = 2003, 3508 x 0.4039 x 2 = 2834.
  auto header = Raster(2480, 3508, 300);
  SetPage(header, 595, 842);
  for (const Scaling scaling : {Scaling::kUnset, Scaling::kAuto, Scaling::kFit}) {
    EXPECT_EQ(LaidOut(header, scaling), (Place{415, 0, 2003, 2834}));
  }
}

TEST(LayOut, ALargerPageIsCutWhenTheJobSaysSo) {
  auto header = Raster(2480, 3508, 300);
  SetPage(header, 595, 842);
  EXPECT_EQ(LaidOut(header, Scaling::kNone), (Place{-1063, -2091, 4960, 7016}));
  // 340.08 / 595.2 = 0.57137: 3508 x 2 x 0.57137 = 4009 dots.
  const Place filled = LaidOut(header, Scaling::kFill);
  EXPECT_EQ(filled.width, 2834);
  EXPECT_NEAR(static_cast<double>(filled.height), 4009, 2);
  EXPECT_NEAR(static_cast<double>(filled.top), -588, 2);
}

TEST(LayOut, ASmallerPageStaysAsItIsUnlessItIsToFit) {
  auto header = Raster(600, 300, 300);
  SetPage(header, 144, 72);
  EXPECT_EQ(LaidOut(header), (Place{817, 1117, 1200, 600}));
  EXPECT_EQ(LaidOut(header, Scaling::kFit), (Place{0, 708, 2834, 1417}));
  EXPECT_EQ(LaidOut(header, Scaling::kNone, {.horizontal = -1, .vertical = 1}),
            (Place{0, 2234, 1200, 600}));
}

TEST(LayOut, AContentKeepsItsPlaceOnAPageThatBecomesSmaller) {
  // A quarter of a page of 680 points, in its upper left corner: the page is halved.
  auto header = Raster(2834, 2834, 600);
  SetPage(header, 680, 680);
  SetBox(header, 0, 340, 340, 680);
  const Place place = LaidOut(header);
  EXPECT_NEAR(static_cast<double>(place.left), 0, 1);
  EXPECT_NEAR(static_cast<double>(place.top), 0, 1);
  EXPECT_NEAR(static_cast<double>(place.width), 1417, 1);
}

}  // namespace
}  // namespace zr7700
