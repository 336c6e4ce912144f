// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/picture_placement.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zr7700 {
namespace {

constexpr double kPointsPerInch = 72;

// In points, upright.
Size NaturalSize(const Picture& picture, Density density, Turn turn) {
  Size size = {.width = picture.dots.width * kPointsPerInch / density.across,
               .height = picture.dots.height * kPointsPerInch / density.down};
  if (turn.IsOnItsSide()) std::swap(size.width, size.height);
  return size;
}

int64_t DotsFor(double points, unsigned dpi) {
  return std::max<int64_t>(1, std::llround(points * dpi / kPointsPerInch));
}

// The picture's density on the disc, which has `dpi` dots an inch.
double DensityOn(const Place& place, Dots dots, const unsigned dpi[2]) {
  return std::min(double{1} * dots.width * dpi[0] / static_cast<double>(place.width),
                  double{1} * dots.height * dpi[1] / static_cast<double>(place.height));
}

}  // namespace

PictureLayout LayOutPicture(const Picture& picture, const PictureOptions& options,
                            const TargetPage& target) {
  const cups_page_header2_t& page = target.header;
  const Turn turn = Then(picture.turn, options.turn);
  const Size natural = NaturalSize(picture, options.density.value_or(picture.density), turn);
  const double scale = ScaleOf(options, natural, target.Points());
  const Place turned = PlaceAt(
      options.position, DotsFor(natural.width * scale, page.HWResolution[0]),
      DotsFor(natural.height * scale, page.HWResolution[1]), page.cupsWidth, page.cupsHeight);
  PictureLayout layout = {.turn = turn,
                          .page = {.width = page.cupsWidth, .height = page.cupsHeight},
                          .picture = BeforeTurn(turn, turned, page.cupsWidth, page.cupsHeight),
                          .dpi = 0};
  unsigned dpi[] = {page.HWResolution[0], page.HWResolution[1]};
  if (turn.IsOnItsSide()) {
    std::swap(layout.page.width, layout.page.height);
    std::swap(dpi[0], dpi[1]);
  }
  layout.dpi = DensityOn(layout.picture, picture.dots, dpi);
  return layout;
}

}  // namespace zr7700
