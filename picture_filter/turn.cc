// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/turn.h"

#include <algorithm>
#include <iterator>

namespace zr7700 {
namespace {

struct Dot {
  int64_t x;
  int64_t y;
};

// What stands for 1 to 8: the stored picture's first line is the top, the top mirrored, the bottom,
// the bottom mirrored, the left side, the right side, the right side mirrored, the left side
// mirrored.
constexpr Turn kOrientations[] = {
    {.mirrored = false, .quarters = 0}, {.mirrored = true, .quarters = 0},
    {.mirrored = false, .quarters = 2}, {.mirrored = true, .quarters = 2},
    {.mirrored = true, .quarters = 3},  {.mirrored = false, .quarters = 1},
    {.mirrored = true, .quarters = 1},  {.mirrored = false, .quarters = 3}};

// Where a dot of the turned page, which has width x height dots, was before.
Dot DotBefore(Turn turn, Dot dot, int64_t width, int64_t height) {
  const int64_t width_before = turn.IsOnItsSide() ? height : width;
  Dot before = dot;
  if (turn.quarters == 1) before = {.x = dot.y, .y = width - 1 - dot.x};
  if (turn.quarters == 2) before = {.x = width - 1 - dot.x, .y = height - 1 - dot.y};
  if (turn.quarters == 3) before = {.x = height - 1 - dot.y, .y = dot.x};
  if (turn.mirrored) before.x = width_before - 1 - before.x;
  return before;
}

}  // namespace

Turn Then(Turn first, Turn second) {
  // A mirror turns the other way what was turned before it.
  const int turned_before = second.mirrored ? 4 - first.quarters : first.quarters;
  return {.mirrored = first.mirrored != second.mirrored,
          .quarters = (turned_before + second.quarters) % 4};
}

Turn TurnOfOrientation(int64_t orientation) {
  const bool is_known = orientation >= 1 && orientation <= std::ssize(kOrientations);
  return is_known ? kOrientations[orientation - 1] : Turn{};
}

Place BeforeTurn(Turn turn, const Place& turned, int64_t width, int64_t height) {
  const Dot a = DotBefore(turn, {.x = turned.left, .y = turned.top}, width, height);
  const Dot last = {.x = turned.left + turned.width - 1, .y = turned.top + turned.height - 1};
  const Dot b = DotBefore(turn, last, width, height);
  return {.left = std::min(a.x, b.x),
          .top = std::min(a.y, b.y),
          .width = turn.IsOnItsSide() ? turned.height : turned.width,
          .height = turn.IsOnItsSide() ? turned.width : turned.height};
}

std::optional<Canvas> Turned(Turn turn, const Canvas& canvas) {
  const uint32_t width = turn.IsOnItsSide() ? canvas.height() : canvas.width();
  const uint32_t height = turn.IsOnItsSide() ? canvas.width() : canvas.height();
  std::optional<Canvas> turned = Canvas::Create(width, height);
  if (!turned) return turned;
  for (uint32_t y = 0; y < height; ++y) {
    const std::span<uint8_t> line = turned->Line(y);
    for (uint32_t x = 0; x < width; ++x) {
      const Dot from = DotBefore(turn, {.x = x, .y = y}, width, height);
      const auto dots = canvas.Line(static_cast<uint32_t>(from.y));
      std::copy_n(dots.begin() + static_cast<std::ptrdiff_t>(from.x) * 3, 3,
                  line.begin() + static_cast<std::ptrdiff_t>(x) * 3);
    }
  }
  return turned;
}

}  // namespace zr7700
