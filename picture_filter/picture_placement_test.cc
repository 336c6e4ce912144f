// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/picture_placement.h"

#include <gtest/gtest.h>

namespace zr7700 {
namespace {

// 1000 x 800 dots at 200 x 100 dpi: 5 x 8 inches.
TargetPage Page() {
  TargetPage page = {};
  page.header.cupsWidth = 1000;
  page.header.cupsHeight = 800;
  page.header.HWResolution[0] = 200;
  page.header.HWResolution[1] = 100;
  return page;
}

PictureOptions With(Scaling scaling, Turn turn = {}, Position position = {}) {
  PictureOptions options;
  options.scaling = scaling;
  options.turn = turn;
  options.position = position;
  return options;
}

// 400 x 100 dots at 100 dpi: 4 x 1 inches.
constexpr Picture kPicture = {.dots = {.width = 400, .height = 100},
                              .density = {.across = 100, .down = 100}};

TEST(PicturePlacementTest, NaturalSizeInTheMiddle) {
  const PictureLayout layout = LayOutPicture(kPicture, With(Scaling::kNone), Page());
  const Place expected = {.left = 100, .top = 350, .width = 800, .height = 100};
  EXPECT_EQ(layout.picture, expected);
  EXPECT_EQ(layout.dpi, 100);
}

// 5 x 1.25 inches.
TEST(PicturePlacementTest, FitReachesTheEdges) {
  const PictureLayout layout = LayOutPicture(kPicture, With(Scaling::kFit), Page());
  const Place expected = {.left = 0, .top = 337, .width = 1000, .height = 125};
  EXPECT_EQ(layout.picture, expected);
  EXPECT_EQ(layout.dpi, 80);
}

// 32 x 8 inches: 2700 of 6400 dots are cut off at either side.
TEST(PicturePlacementTest, FillCutsOffEvenly) {
  const PictureLayout layout = LayOutPicture(kPicture, With(Scaling::kFill), Page());
  const Place expected = {.left = -2700, .top = 0, .width = 6400, .height = 800};
  EXPECT_EQ(layout.picture, expected);
  EXPECT_EQ(layout.dpi, 12.5);
}

// Turned it is 1 x 4 inches, 200 x 400 dots, at the page's left upper corner. Before the page was
// turned to the right this corner was the lower left one, and the page 800 x 1000 dots.
TEST(PicturePlacementTest, TurnedPictureLiesOnATurnedPage) {
  const Turn right = {.mirrored = false, .quarters = 1};
  const Position top_left = {.horizontal = -1, .vertical = -1};
  const PictureLayout layout =
      LayOutPicture(kPicture, With(Scaling::kNone, right, top_left), Page());
  const Place expected = {.left = 0, .top = 800, .width = 400, .height = 200};
  EXPECT_EQ(layout.picture, expected);
  EXPECT_EQ(layout.turn, right);
  EXPECT_EQ(layout.page.width, 800U);
  EXPECT_EQ(layout.page.height, 1000U);
  EXPECT_EQ(layout.dpi, 100);
}

TEST(PicturePlacementTest, ThePicturesOwnTurnComesFirst) {
  Picture picture = kPicture;
  picture.turn = TurnOfOrientation(6);
  const PictureLayout layout =
      LayOutPicture(picture, With(Scaling::kNone, {.mirrored = false, .quarters = 1}), Page());
  const Turn upside_down = {.mirrored = false, .quarters = 2};
  EXPECT_EQ(layout.turn, upside_down);
  const Place expected = {.left = 100, .top = 350, .width = 800, .height = 100};
  EXPECT_EQ(layout.picture, expected);
}

TEST(PicturePlacementTest, TheJobsDensityReplacesThePictures) {
  PictureOptions options = With(Scaling::kUnset);
  options.density = Density{.across = 200, .down = 50};
  const PictureLayout layout = LayOutPicture(kPicture, options, Page());
  // 2 x 2 inches.
  const Place expected = {.left = 300, .top = 300, .width = 400, .height = 200};
  EXPECT_EQ(layout.picture, expected);
}

TEST(PicturePlacementTest, NothingBecomesLessThanADot) {
  const Picture line = {.dots = {.width = 131072, .height = 1}, .density = {}};
  EXPECT_EQ(LayOutPicture(line, With(Scaling::kFit), Page()).picture.height, 1);
}

}  // namespace
}  // namespace zr7700
