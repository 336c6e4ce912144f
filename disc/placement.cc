// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/placement.h"

#include <strings.h>

#include <algorithm>
#include <span>

namespace zr7700 {
namespace {

struct ScalingRow {
  const char* keyword;
  Scaling scaling;
};
constexpr ScalingRow kScalings[] = {{"auto", Scaling::kAuto},
                                    {"auto-fit", Scaling::kAuto},
                                    {"fit", Scaling::kFit},
                                    {"fill", Scaling::kFill},
                                    {"none", Scaling::kNone}};

struct PositionRow {
  const char* keyword;
  Position position;
};
constexpr PositionRow kPositions[] = {
    {"center", {0, 0}},     {"top", {0, -1}},         {"left", {-1, 0}},
    {"right", {1, 0}},      {"bottom", {0, 1}},       {"top-left", {-1, -1}},
    {"top-right", {1, -1}}, {"bottom-left", {-1, 1}}, {"bottom-right", {1, 1}}};

// Sizes in points are rounded on their way through documents and headers.
constexpr double kFitsWithin = 1.005;

bool FitsOn(Size natural, Size page) {
  return natural.width <= page.width * kFitsWithin && natural.height <= page.height * kFitsWithin;
}

// Dots before something of `length` dots on a page of `page` dots. The shift rounds down, for
// negative numbers too.
int64_t Before(int side, int64_t length, int64_t page) {
  if (side < 0) return 0;
  return side == 0 ? (page - length) >> 1 : page - length;
}

}  // namespace

Scaling ScalingOf(int option_count, cups_option_t* options) {
  const char* const value = cupsGetOption("print-scaling", option_count, options);
  if (value == nullptr) return Scaling::kUnset;
  for (const ScalingRow& row : kScalings) {
    if (strcasecmp(row.keyword, value) == 0) return row.scaling;
  }
  return Scaling::kUnset;
}

Position PositionOf(int option_count, cups_option_t* options) {
  const char* const value = cupsGetOption("position", option_count, options);
  if (value == nullptr) return {};
  for (const PositionRow& row : kPositions) {
    if (strcasecmp(row.keyword, value) == 0) return row.position;
  }
  return {};
}

double ScaleFor(Scaling scaling, Size natural, Size page) {
  const double across = page.width / natural.width;
  const double down = page.height / natural.height;
  switch (scaling) {
    case Scaling::kNone:
      return 1;
    case Scaling::kFit:
      return std::min(across, down);
    case Scaling::kFill:
      return std::max(across, down);
    case Scaling::kUnset:
    case Scaling::kAuto:
      break;
  }
  return FitsOn(natural, page) ? 1 : std::min(across, down);
}

Place PlaceAt(Position position, int64_t width, int64_t height, int64_t page_width,
              int64_t page_height) {
  return {.left = Before(position.horizontal, width, page_width),
          .top = Before(position.vertical, height, page_height),
          .width = width,
          .height = height};
}

}  // namespace zr7700
