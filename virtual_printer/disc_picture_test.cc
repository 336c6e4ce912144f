// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/disc_picture.h"

#include <gtest/gtest.h>

namespace zr7700::printer {
namespace {

PrintedPage Page(uint16_t dpi, uint32_t width, uint32_t height, int32_t left_margin, int32_t feed,
                 uint8_t media = 1) {
  PrintedPage page;
  page.family = Family::kGranite;
  page.start.resolution_dpi = page.start.vertical_resolution_dpi = dpi;
  page.start.width_dots = width;
  page.start.height_lines = height;
  page.start.left_margin_dots = left_margin;
  page.start.media = media;
  page.feed = feed;
  page.canvas.width = width;
  page.canvas.height = height;
  page.canvas.dots.resize(size_t{width} * height);
  return page;
}

uint8_t& Dot(PrintedPage& page, size_t column, size_t line) {
  return page.canvas.dots.at(line * page.canvas.width + column);
}

TEST(PlaceDisc, PagesOfWholeDiscsLieOnThem) {
  const struct {
    uint16_t dpi;
    uint32_t side;
    int32_t left_margin;
    uint8_t media;
    int diameter_mm;
  } rows[] = {{600, 2834, 1916, 1, 120}, {600, 2834, 1902, 7, 120}, {300, 1417, 958, 2, 120},
              {300, 1417, 951, 9, 120},  {600, 1890, 1916, 1, 80},  {300, 945, 958, 1, 80}};
  for (const auto& row : rows) {
    const DiscPlace place =
        PlaceDisc(Page(row.dpi, row.side, row.side, row.left_margin, 138, row.media));
    EXPECT_EQ(place.diameter_mm, row.diameter_mm);
    EXPECT_EQ(place.side_dots, row.side);
    EXPECT_EQ(place.left_dots, 0);
    EXPECT_EQ(place.top_dots, 0);
  }
}

TEST(PlaceDisc, ASmallPageMayLieOnALargeDisc) {
  const PrintedPage page = Page(600, 100, 100, 1916, 138);
  EXPECT_EQ(PlaceDisc(page).diameter_mm, 80);
  EXPECT_EQ(PlaceDisc(page, 120).side_dots, 2834u);
}

TEST(PlaceDisc, MarginAndFeedMoveThePage) {
  // 10 dots right; feed 140 is one dot of 600 dpi, 137 half a dot up, which is none.
  EXPECT_EQ(PlaceDisc(Page(600, 9, 9, 1926, 138)).left_dots, 10);
  EXPECT_EQ(PlaceDisc(Page(600, 9, 9, 1800, 138)).left_dots, -116);
  EXPECT_EQ(PlaceDisc(Page(600, 9, 9, 1916, 140)).top_dots, 1);
  EXPECT_EQ(PlaceDisc(Page(600, 9, 9, 1916, 139)).top_dots, 1);
  EXPECT_EQ(PlaceDisc(Page(600, 9, 9, 1916, 137)).top_dots, 0);
  EXPECT_EQ(PlaceDisc(Page(600, 9, 9, 1916, 0)).top_dots, -69);
  // At 300 dpi four steps of the feed are a dot: 138 - 2 is half a dot up, which is none.
  EXPECT_EQ(PlaceDisc(Page(300, 9, 9, 958, 136)).top_dots, 0);
  EXPECT_EQ(PlaceDisc(Page(300, 9, 9, 958, 135)).top_dots, -1);
  EXPECT_EQ(PlaceDisc(Page(300, 9, 9, 958, 140)).top_dots, 1);
}

TEST(MeasureDots, BoxAndEdges) {
  // 600 dpi, 120 mm: the middle lies at 1417.32 and the hole reaches 177.17 dots from it.
  PrintedPage page = Page(600, 2834, 2834, 1916, 138);
  const DiscPlace place = PlaceDisc(page);
  EXPECT_LT(MeasureDots(page, place).right, MeasureDots(page, place).left);
  Dot(page, 1417, 1) = 1;           // just inside the upper edge
  Dot(page, 1417, 1417 - 176) = 1;  // its middle lies 175.82 above the disc's: in the hole
  Dot(page, 1417, 1417 - 178) = 1;  // 177.82: on the disc
  Dot(page, 0, 0) = 4;              // in the corner, beyond the disc
  Dot(page, 2000, 2500) = 16;
  const DotsOnDisc dots = MeasureDots(page, place);
  EXPECT_EQ(dots.left, 0);
  EXPECT_EQ(dots.top, 0);
  EXPECT_EQ(dots.right, 2000);
  EXPECT_EQ(dots.bottom, 2500);
  EXPECT_EQ(dots.outside, 1u);
  EXPECT_EQ(dots.in_hole, 1u);
}

TEST(DrawDots, PutsThePageWhereItLies) {
  // 3 x 2 dots, moved 2 dots right and 1 down.
  PrintedPage page = Page(600, 3, 2, 1918, 140);
  Dot(page, 0, 0) = 3;
  Dot(page, 2, 1) = 12;
  const IndexedPicture picture = DrawDots(page, PlaceDisc(page));
  EXPECT_EQ(picture.width, 1890u);
  EXPECT_EQ(picture.height, 1890u);
  ASSERT_EQ(picture.colors.size(), 64u);
  EXPECT_EQ(picture.pixels.at(1890 * 1 + 2), 3);
  EXPECT_EQ(picture.pixels.at(1890 * 2 + 4), 12);
  EXPECT_EQ(std::count(picture.pixels.begin(), picture.pixels.end(), 0), 1890 * 1890 - 2);
  EXPECT_EQ(picture.colors[0], (Rgb{255, 255, 255}));
  // Full cyan of Granite on media 1: red 0.0025 of the light, 8 of 255.
  EXPECT_EQ(picture.colors[3][0], 8);
}

TEST(DrawDots, WhatLiesBeyondTheDiscIsCutOff) {
  for (const int32_t left_margin : {-5100, 1914, 1916 + 1889, 5100}) {
    for (const int32_t feed : {-12000, 136, 138 + 2 * 1889, 24000}) {
      PrintedPage page = Page(600, 3, 2, left_margin, feed);
      std::fill(page.canvas.dots.begin(), page.canvas.dots.end(), uint8_t{3});
      const IndexedPicture picture = DrawDots(page, PlaceDisc(page));
      const bool column_shows = left_margin == 1914 || left_margin == 1916 + 1889;
      const bool line_shows = feed == 136 || feed == 138 + 2 * 1889;
      EXPECT_EQ(std::count(picture.pixels.begin(), picture.pixels.end(), 3),
                column_shows && line_shows ? 1 : 0);
    }
  }
}

TEST(DrawDisc, ShowsOutlineHoleAndLabel) {
  PrintedPage page = Page(600, 2834, 2834, 1916, 138);
  // A block of four dots square, all of it large yellow drops: one pixel.
  for (size_t line = 400; line < 404; ++line) {
    for (size_t column = 1200; column < 1204; ++column) Dot(page, column, line) = 48;
  }
  const RgbPicture picture = DrawDisc(page, PlaceDisc(page));
  // 2834 / 4 rounded up, and 10 pixels of border on each side.
  ASSERT_EQ(picture.width, 729u);
  ASSERT_EQ(picture.height, 729u);
  const auto pixel = [&](size_t x, size_t y) { return picture.pixels.at(729 * y + x); };
  const Rgb white = {255, 255, 255};
  EXPECT_EQ(pixel(364, 200), white);
  EXPECT_NE(pixel(0, 0), white);
  EXPECT_EQ(pixel(364, 364), pixel(0, 0)) << "the table is seen through the hole";
  EXPECT_LT(pixel(310, 110)[2], 40);
  EXPECT_GT(pixel(310, 110)[0], 250);
  EXPECT_EQ(pixel(311, 110), white);
  // The outline: darker than the table, at the disc's left edge half way down.
  EXPECT_LT(pixel(9, 364)[0], pixel(0, 0)[0]);
}

}  // namespace
}  // namespace zr7700::printer
