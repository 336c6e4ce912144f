// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "page_fitter/page_layout.h"

#include <algorithm>
#include <cmath>

namespace zr7700 {
namespace {

constexpr double kPointsPerInch = 72;
// A page is the disc's own when it is as large within so many points: 226 and 227 are both what the
// 80 mm of a small disc are rounded to.
constexpr double kSameSize_points = 2;
constexpr double kMiddle_points = 1;

// One dimension of a layout; lengths in points unless they say otherwise.
struct Axis {
  unsigned raster_dots;
  unsigned raster_dpi;
  double page;           // the raster's page
  double raster_middle;  // of the raster on its page, from the left or upper edge
  unsigned disc_dots;
  unsigned disc_dpi;
  int side;  // -1, 0 or 1: where a page goes that is not the disc's own
};

struct Span {
  int64_t first_dot;
  int64_t dots;
};

// Neither NaN nor of a size that no page has: 14,400 points are 5 m.
bool IsLength(double points) { return points >= 1 && points <= 14400; }

// The length of the page: never less than the raster on it, whatever the header says.
double PageLength(double exact, unsigned whole, double raster) {
  const double told = IsLength(exact) ? exact : IsLength(whole) ? whole : 0;
  return std::max(told, raster);
}

// What a header says of the raster's place along one dimension, in points from the page's left or
// lower edge.
struct ToldPlace {
  double exact_from;
  double exact_to;
  unsigned from;
  unsigned to;
  unsigned margin;
};

// The middle of the box, or of what stands at the margin; that of the page when neither is told or
// it lies elsewhere.
double RasterMiddle(const ToldPlace& told, double raster, double page) {
  double middle = page / 2;
  if (IsLength(told.exact_to - told.exact_from)) {
    middle = (told.exact_from + told.exact_to) / 2;
  } else if (told.to > told.from) {
    middle = (double{1} * told.from + told.to) / 2;
  } else if (told.margin > 0 && told.margin + raster <= page + kMiddle_points) {
    middle = told.margin + raster / 2;
  }
  const bool in_middle = std::abs(middle - page / 2) <= kMiddle_points;
  return !in_middle && middle >= 0 && middle <= page ? middle : page / 2;
}

double RasterLength(unsigned dots, unsigned dpi) { return dots * kPointsPerInch / dpi; }

// Dimension 0 goes across and counts from the left edge, dimension 1 goes down: headers count it
// from the lower edge, and the caller turns it over.
Axis AxisOf(const cups_page_header2_t& header, const TargetPage& target, int dimension) {
  const unsigned dots = dimension == 0 ? header.cupsWidth : header.cupsHeight;
  const unsigned dpi = header.HWResolution[dimension];
  const double raster = RasterLength(dots, dpi);
  const double page =
      PageLength(header.cupsPageSize[dimension], header.PageSize[dimension], raster);
  const ToldPlace told = {.exact_from = header.cupsImagingBBox[dimension],
                          .exact_to = header.cupsImagingBBox[dimension + 2],
                          .from = header.ImagingBoundingBox[dimension],
                          .to = header.ImagingBoundingBox[dimension + 2],
                          .margin = header.Margins[dimension]};
  return {.raster_dots = dots,
          .raster_dpi = dpi,
          .page = page,
          .raster_middle = RasterMiddle(told, raster, page),
          .disc_dots = dimension == 0 ? target.header.cupsWidth : target.header.cupsHeight,
          .disc_dpi = target.header.HWResolution[dimension],
          .side = 0};
}

Axis Across(const cups_page_header2_t& header, const TargetPage& target, Position position) {
  Axis axis = AxisOf(header, target, 0);
  axis.side = position.horizontal;
  return axis;
}

Axis Down(const cups_page_header2_t& header, const TargetPage& target, Position position) {
  Axis axis = AxisOf(header, target, 1);
  axis.raster_middle = axis.page - axis.raster_middle;
  axis.side = position.vertical;
  return axis;
}

double DiscLength(const Axis& axis) { return axis.disc_dots * kPointsPerInch / axis.disc_dpi; }

bool IsDiscLength(const Axis& axis) {
  return std::abs(axis.page - DiscLength(axis)) <= kSameSize_points;
}

// From the middle of the page the raster's middle keeps its way, scaled. Halves of a dot go to the
// left and up.
Span LayOutAxis(const Axis& axis, double scale, bool own_page) {
  const double dots = axis.raster_dots * scale * axis.disc_dpi / axis.raster_dpi;
  const int64_t length = std::max<int64_t>(1, std::llround(dots));
  const double free = own_page ? 0 : DiscLength(axis) - axis.page * scale;
  const double from_middle = (axis.raster_middle - axis.page / 2) * scale + axis.side * free / 2;
  const double middle = axis.disc_dots / 2.0 + from_middle * axis.disc_dpi / kPointsPerInch;
  return {.first_dot = static_cast<int64_t>(std::floor(middle - static_cast<double>(length) / 2)),
          .dots = length};
}

}  // namespace

Place LayOut(const cups_page_header2_t& header, const TargetPage& target, Scaling scaling,
             Position position) {
  const Axis across = Across(header, target, position);
  const Axis down = Down(header, target, position);
  const bool own_page = IsDiscLength(across) && IsDiscLength(down);
  const double scale = own_page
                           ? 1
                           : ScaleFor(scaling, {.width = across.page, .height = down.page},
                                      {.width = DiscLength(across), .height = DiscLength(down)});
  const Span horizontal = LayOutAxis(across, scale, own_page);
  const Span vertical = LayOutAxis(down, scale, own_page);
  return {.left = horizontal.first_dot,
          .top = vertical.first_dot,
          .width = horizontal.dots,
          .height = vertical.dots};
}

}  // namespace zr7700
