// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/turn.h"

#include <gtest/gtest.h>

#include <string>

namespace zr7700 {
namespace {

// Canvases as text: one letter a dot, lines with "/" between them.
Canvas FromText(const std::string& text) {
  const auto width = static_cast<uint32_t>(text.find('/'));
  const auto height = static_cast<uint32_t>((text.size() + 1) / (width + 1));
  Canvas canvas = *Canvas::Create(width, height);
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      for (uint32_t k = 0; k < 3; ++k) {
        canvas.Line(y)[x * 3 + k] =
            static_cast<uint8_t>(text[y * (width + 1) + x] + static_cast<int>(k));
      }
    }
  }
  return canvas;
}

std::string ToText(const Canvas& canvas) {
  std::string text;
  for (uint32_t y = 0; y < canvas.height(); ++y) {
    if (y > 0) text += '/';
    for (uint32_t x = 0; x < canvas.width(); ++x) {
      const auto dot = canvas.Line(y).subspan(x * size_t{3}, 3);
      EXPECT_EQ(dot[1], dot[0] + 1);
      EXPECT_EQ(dot[2], dot[0] + 2);
      text += static_cast<char>(dot[0]);
    }
  }
  return text;
}

std::string TurnedText(Turn turn, const std::string& text) {
  return ToText(*Turned(turn, FromText(text)));
}

// Each is how the upright picture "abc/def" is stored under that orientation, as the definition of
// the Exif tag has it: 6, for one, when the first line is the right side from the top.
TEST(TurnTest, EveryOrientationComesOutUpright) {
  const std::string stored[] = {"abc/def",  "cba/fed",  "fed/cba",  "def/abc",
                                "ad/be/cf", "cf/be/ad", "fc/eb/da", "da/eb/fc"};
  for (int orientation = 1; orientation <= 8; ++orientation) {
    EXPECT_EQ(TurnedText(TurnOfOrientation(orientation), stored[orientation - 1]), "abc/def")
        << orientation;
  }
}

TEST(TurnTest, UnknownOrientationsAreUpright) {
  for (const int orientation : {-1, 0, 9, 65535}) {
    EXPECT_TRUE(TurnOfOrientation(orientation).IsNone()) << orientation;
  }
}

TEST(TurnTest, OneAfterTheOtherIsBothAtOnce) {
  for (int first = 1; first <= 8; ++first) {
    for (int second = 1; second <= 8; ++second) {
      const Turn a = TurnOfOrientation(first);
      const Turn b = TurnOfOrientation(second);
      EXPECT_EQ(TurnedText(Then(a, b), "abc/def"), TurnedText(b, TurnedText(a, "abc/def")))
          << first << " " << second;
    }
  }
}

// The lower right dot of the turned page carries the letter that is at its place before the turn.
TEST(TurnTest, PlacesAreFoundOnThePageBeforeItsTurn) {
  for (int orientation = 1; orientation <= 8; ++orientation) {
    const Turn turn = TurnOfOrientation(orientation);
    const std::string before = turn.IsOnItsSide() ? "ab/cd/ef" : "abc/def";
    const std::string after = TurnedText(turn, before);
    const Place place = BeforeTurn(turn, {.left = 2, .top = 1, .width = 1, .height = 1}, 3, 2);
    const size_t line = turn.IsOnItsSide() ? 3 : 4;
    EXPECT_EQ(before[static_cast<size_t>(place.top) * line + static_cast<size_t>(place.left)],
              after[6])
        << orientation;
  }
}

TEST(TurnTest, APlaceBeyondThePageKeepsItsSize) {
  const Place turned = {.left = -10, .top = -20, .width = 40, .height = 50};
  // A quarter to the right: what was at the left is at the top.
  const Place expected = {.left = -20, .top = 100 - 30, .width = 50, .height = 40};
  EXPECT_EQ(BeforeTurn({.mirrored = false, .quarters = 1}, turned, 100, 60), expected);
}

}  // namespace
}  // namespace zr7700
