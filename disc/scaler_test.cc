// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/scaler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace zr7700 {
namespace {

using Line = std::vector<uint8_t>;

// A line of grey dots.
Line Greys(std::initializer_list<uint8_t> greys) {
  Line line;
  for (const uint8_t grey : greys) line.insert(line.end(), 3, grey);
  return line;
}

Line LineOf(const Canvas& canvas, uint32_t y) {
  const auto line = canvas.Line(y);
  return {line.begin(), line.end()};
}

TEST(Scaler, SameSizeIsCopiedToItsPlace) {
  auto canvas = Canvas::Create(4, 4);
  Scaler scaler(2, 2, {.left = 1, .top = 2, .width = 2, .height = 2}, *canvas);
  scaler.AddLine(Line{1, 2, 3, 4, 5, 6});
  scaler.AddLine(Greys({10, 20}));
  EXPECT_EQ(LineOf(*canvas, 1), Greys({255, 255, 255, 255}));
  EXPECT_EQ(LineOf(*canvas, 2), (Line{255, 255, 255, 1, 2, 3, 4, 5, 6, 255, 255, 255}));
  EXPECT_EQ(LineOf(*canvas, 3), Greys({255, 10, 20, 255}));
}

TEST(Scaler, WhatLiesBeyondThePageIsCutOff) {
  auto canvas = Canvas::Create(2, 2);
  Scaler scaler(4, 4, {.left = -1, .top = -1, .width = 4, .height = 4}, *canvas);
  for (uint8_t y = 0; y < 4; ++y) {
    const auto first = static_cast<uint8_t>(10 * y);
    scaler.AddLine(Greys({first, static_cast<uint8_t>(first + 1), static_cast<uint8_t>(first + 2),
                          static_cast<uint8_t>(first + 3)}));
  }
  EXPECT_EQ(LineOf(*canvas, 0), Greys({11, 12}));
  EXPECT_EQ(LineOf(*canvas, 1), Greys({21, 22}));
}

TEST(Scaler, HalfTheSizeAveragesFourDots) {
  auto canvas = Canvas::Create(2, 1);
  Scaler scaler(4, 2, {.left = 0, .top = 0, .width = 2, .height = 1}, *canvas);
  scaler.AddLine(Greys({10, 20, 100, 200}));
  scaler.AddLine(Greys({30, 40, 0, 100}));
  EXPECT_EQ(LineOf(*canvas, 0), Greys({25, 100}));
}

TEST(Scaler, EvenAreasStayWhatTheyAre) {
  for (const int64_t side : {1, 3, 9, 10, 11, 50}) {
    auto canvas = Canvas::Create(60, 60);
    Scaler scaler(10, 10, {.left = 2, .top = 3, .width = side, .height = side}, *canvas);
    for (int y = 0; y < 10; ++y) scaler.AddLine(Line(30, 77));
    for (uint32_t y = 0; y < 60; ++y) {
      for (uint32_t x = 0; x < 60; ++x) {
        const bool inside = x >= 2 && x < 2 + side && y >= 3 && y < 3 + side;
        ASSERT_EQ(canvas->Line(y)[x * 3], inside ? 77 : 255) << side << ": " << x << ", " << y;
      }
    }
  }
}

TEST(Scaler, LargerGoesThroughTheDotsAndStaysInABytesRange) {
  // Three times the size: the middle of each source dot is a target dot.
  auto canvas = Canvas::Create(9, 3);
  Scaler scaler(3, 1, {.left = 0, .top = 0, .width = 9, .height = 3}, *canvas);
  scaler.AddLine(Greys({0, 255, 0}));
  const auto line = LineOf(*canvas, 1);
  EXPECT_EQ(line[1 * 3], 0);
  EXPECT_EQ(line[4 * 3], 255);
  EXPECT_EQ(line[7 * 3], 0);
  EXPECT_EQ(LineOf(*canvas, 0), line);
  // Left of the first dot a cubic falls below 0, which a byte cannot.
  EXPECT_EQ(line[0], 0);
}

TEST(Scaler, LinesBeyondThePictureArePassedOver) {
  auto canvas = Canvas::Create(1, 1);
  Scaler scaler(1, 1, {.left = 0, .top = 0, .width = 1, .height = 1}, *canvas);
  scaler.AddLine(Greys({5}));
  scaler.AddLine(Greys({6}));
  EXPECT_EQ(LineOf(*canvas, 0), Greys({5}));
}

TEST(Scaler, OffThePageNothingIsDrawn) {
  auto canvas = Canvas::Create(2, 2);
  for (const Place& place : {Place{2, 0, 2, 2}, Place{0, 2, 2, 2}, Place{-2, 0, 2, 2}}) {
    Scaler scaler(2, 2, place, *canvas);
    scaler.AddLine(Greys({1, 2}));
    scaler.AddLine(Greys({1, 2}));
  }
  EXPECT_EQ(LineOf(*canvas, 0), Greys({255, 255}));
  EXPECT_EQ(LineOf(*canvas, 1), Greys({255, 255}));
}

}  // namespace
}  // namespace zr7700
