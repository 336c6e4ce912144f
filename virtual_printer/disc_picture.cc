// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/disc_picture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "virtual_printer/ink_model.h"

namespace zr7700::printer {
namespace {

constexpr double kMmPerInch = 25.4;
constexpr double kHoleMm = 15;
constexpr int kSeatTop = 69;  // the upper edge of every disc, 1/600 inch

// The left edge of a disc, 1/600 inch; discs with a raised rim sit further left.
int SeatLeft(uint8_t media) { return media >= 7 ? 1902 : 1916; }

// Whole dots at 300 an inch, times two at 600: 2834 dots for 120 mm, 1890 for 80 mm.
uint32_t SideDots(int diameter_mm, uint16_t resolution_dpi) {
  const long at_300 = std::lround(diameter_mm * 300 / kMmPerInch);
  return static_cast<uint32_t>(at_300) * resolution_dpi / 300;
}

int SmallestDisc(const PageStart& page) {
  const uint32_t longest = std::max(page.width_dots, page.height_lines);
  return longest <= SideDots(80, page.resolution_dpi) ? 80 : 120;
}

// Tells by squared distances where a dot lies, in dots from the disc's middle.
struct Rings {
  Rings(int diameter_mm, double dots_per_mm)
      : middle(diameter_mm * dots_per_mm / 2),
        edge2(Square(middle)),
        hole2(Square(kHoleMm / 2 * dots_per_mm)) {}

  static double Square(double value) { return value * value; }

  // Of the middle of dot (x, y).
  double Distance2(int64_t x, int64_t y) const {
    return Square(static_cast<double>(x) + 0.5 - middle) +
           Square(static_cast<double>(y) + 0.5 - middle);
  }

  double middle;
  double edge2;
  double hole2;
};

double DotsPerMm(const PrintedPage& page) { return page.start.resolution_dpi / kMmPerInch; }

// The page's dot at (x, y) of the disc's square; a dot without drops off the page.
unsigned DotAt(const PageCanvas& canvas, const DiscPlace& place, int64_t x, int64_t y) {
  const int64_t column = x - place.left_dots;
  const int64_t line = y - place.top_dots;
  if (column < 0 || column >= canvas.width || line < 0 || line >= canvas.height) return 0;
  return canvas.dots[static_cast<size_t>(line) * canvas.width + static_cast<size_t>(column)];
}

constexpr double kBackground = 0.72;  // grey table, linear light
constexpr double kOutline = 0.12;
constexpr double kOutlineMm = 0.35;
constexpr int64_t kBorderPixels = 10;

// What lies under the ink, as a share of white: the table, the disc's outline, the disc.
class Ground {
 public:
  Ground(int diameter_mm, double dots_per_mm)
      : rings_(diameter_mm, dots_per_mm),
        line_out2_(Rings::Square(rings_.middle + kOutlineMm * dots_per_mm)),
        line_in2_(Rings::Square((kHoleMm / 2 - kOutlineMm) * dots_per_mm)) {}

  double At(int64_t x, int64_t y) const {
    const double distance2 = rings_.Distance2(x, y);
    if (distance2 >= rings_.hole2 && distance2 <= rings_.edge2) return 1;
    return distance2 > line_out2_ || distance2 < line_in2_ ? kBackground : kOutline;
  }

 private:
  Rings rings_;
  double line_out2_;
  double line_in2_;
};

}  // namespace

DiscPlace PlaceDisc(const PrintedPage& page, int diameter_mm) {
  const PageStart& start = page.start;
  const int64_t dpi = start.resolution_dpi;
  DiscPlace place;
  place.diameter_mm = diameter_mm != 0 ? diameter_mm : SmallestDisc(start);
  place.side_dots = SideDots(place.diameter_mm, start.resolution_dpi);
  place.left_dots = start.left_margin_dots - SeatLeft(start.media) * dpi / 600;
  // The feed counts 1/1200 inch; half dots are rounded downwards on the disc.
  const double top = static_cast<double>((page.feed - int64_t{2} * kSeatTop) * dpi) / 1200;
  place.top_dots = static_cast<int64_t>(std::floor(top + 0.5));
  return place;
}

DotsOnDisc MeasureDots(const PrintedPage& page, const DiscPlace& place) {
  const PageCanvas& canvas = page.canvas;
  const Rings rings(place.diameter_mm, DotsPerMm(page));
  DotsOnDisc found;
  for (int64_t line = 0; line < canvas.height; ++line) {
    const uint8_t* dots = &canvas.dots[static_cast<size_t>(line) * canvas.width];
    const int64_t y = line + place.top_dots;
    for (int64_t column = 0; column < canvas.width; ++column) {
      if (dots[column] == 0) continue;
      const int64_t x = column + place.left_dots;
      const bool first = found.right < found.left;
      found.left = first ? x : std::min(found.left, x);
      found.right = first ? x : std::max(found.right, x);
      found.top = first ? y : found.top;
      found.bottom = y;
      const double distance2 = rings.Distance2(x, y);
      if (distance2 > rings.edge2) ++found.outside;
      if (distance2 < rings.hole2) ++found.in_hole;
    }
  }
  return found;
}

IndexedPicture DrawDots(const PrintedPage& page, const DiscPlace& place) {
  IndexedPicture picture{place.side_dots, place.side_dots, {}, {}};
  for (const Light& light : DotLights(page.family, page.start.media)) {
    picture.colors.push_back(ToSrgb(light));
  }
  const PageCanvas& canvas = page.canvas;
  const int64_t side = place.side_dots;
  picture.pixels.resize(static_cast<size_t>(side * side));
  const int64_t left = std::clamp<int64_t>(place.left_dots, 0, side);
  const int64_t right = std::clamp<int64_t>(place.left_dots + canvas.width, left, side);
  for (int64_t y = 0; y < side && left < right; ++y) {
    const int64_t line = y - place.top_dots;
    if (line < 0 || line >= canvas.height) continue;
    const int64_t first = line * canvas.width + (left - place.left_dots);
    std::copy_n(canvas.dots.begin() + static_cast<std::ptrdiff_t>(first), right - left,
                picture.pixels.begin() + static_cast<std::ptrdiff_t>(y * side + left));
  }
  return picture;
}

RgbPicture DrawDisc(const PrintedPage& page, const DiscPlace& place) {
  const int64_t block = page.start.resolution_dpi / 150;
  const int64_t side = (place.side_dots + block - 1) / block + 2 * kBorderPixels;
  const auto lights = DotLights(page.family, page.start.media);
  const Ground ground(place.diameter_mm, DotsPerMm(page));
  RgbPicture picture{static_cast<uint32_t>(side), static_cast<uint32_t>(side), {}};
  picture.pixels.reserve(static_cast<size_t>(side * side));
  const double share = 1.0 / static_cast<double>(block * block);
  for (int64_t pixel = 0; pixel < side * side; ++pixel) {
    const int64_t left = (pixel % side - kBorderPixels) * block;
    const int64_t top = (pixel / side - kBorderPixels) * block;
    Light mean{};
    for (int64_t dot = 0; dot < block * block; ++dot) {
      const int64_t x = left + dot % block;
      const int64_t y = top + dot / block;
      const double weight = share * ground.At(x, y);
      const Light& light = lights[DotAt(page.canvas, place, x, y)];
      for (size_t i = 0; i < mean.size(); ++i) mean[i] += weight * light[i];
    }
    picture.pixels.push_back(ToSrgb(mean));
  }
  return picture;
}

}  // namespace zr7700::printer
