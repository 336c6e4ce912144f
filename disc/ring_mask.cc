// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/ring_mask.h"

#include <algorithm>

#include "disc/ring.h"

namespace zr7700 {
namespace {

// Dots of a line from `first` up to and without `end`.
struct Dots {
  int first;
  int end;
};

void Whiten(std::span<uint8_t> line, Dots dots) {
  const int width = static_cast<int>(line.size() / 3);
  const int first = std::clamp(dots.first, 0, width);
  const int end = std::clamp(dots.end, first, width);
  std::fill(line.begin() + ptrdiff_t{first} * 3, line.begin() + ptrdiff_t{end} * 3, uint8_t{0xFF});
}

// A page's ring, line by line. Lines count from either edge; the page's two halves are alike.
class Ring {
 public:
  explicit Ring(const TargetPage& page)
      : width_(static_cast<int>(page.header.cupsWidth)),
        height_(static_cast<int>(page.header.cupsHeight)),
        margin_(static_cast<int>(page.margin_dots)),
        hole_(static_cast<int>(2 * page.hole_radius_dots)) {}

  // The dots of line `y` inside the outline; none in the margin, whose last line is still part of
  // it.
  Dots Inside(int y) const {
    const int from_edge = std::min(y, height_ - 1 - y);
    if (y <= margin_ || y >= height_ - margin_) return {0, 0};
    const int diameter = height_ - 2 * margin_;
    const int from_middle = (diameter - 1 - 2 * (from_edge - margin_)) / 2;
    const int half = OutlineHalfWidth(static_cast<uint32_t>(diameter), from_middle);
    return {width_ - Middle() - half, width_ - Middle() + half + 1};
  }

  // The dots of line `y` in the hole.
  Dots Hole(int y) const {
    const int from_edge = std::min(y, height_ - 1 - y);
    const int first_line = (height_ - hole_ + 1) / 2;
    const int twice_from_middle = hole_ - 2 * (from_edge - first_line);
    if (from_edge < first_line || twice_from_middle <= 0) return {0, 0};
    const int half =
        HoleHalfWidth(static_cast<uint32_t>(hole_), static_cast<uint32_t>(twice_from_middle));
    return {width_ - Middle() - half + 1, width_ - Middle() + half};
  }

  int width() const { return width_; }
  int height() const { return height_; }

 private:
  // The filter counts a line's dots from the right, and this one is the middle.
  int Middle() const { return width_ / 2; }

  int width_;
  int height_;
  int margin_;
  int hole_;
};

}  // namespace

void WhitenOffTheRing(const TargetPage& page, Canvas& canvas) {
  const Ring ring(page);
  for (int y = 0; y < ring.height(); ++y) {
    const std::span<uint8_t> line = canvas.Line(static_cast<uint32_t>(y));
    const Dots inside = ring.Inside(y);
    Whiten(line, {0, inside.first});
    Whiten(line, ring.Hole(y));
    Whiten(line, {inside.end, ring.width()});
  }
}

}  // namespace zr7700
