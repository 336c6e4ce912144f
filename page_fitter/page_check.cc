// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "page_fitter/page_check.h"

#include <cstdint>

#include "disc/raster_header.h"
#include "page_fitter/pixel_form.h"

namespace zr7700 {
namespace {

constexpr uint64_t kMostDots = 300000000;
constexpr unsigned kFinest_dpi = 19200;
constexpr unsigned kMostCopies = 9999;

bool IsResolution(unsigned dpi) { return dpi >= 1 && dpi <= kFinest_dpi; }

bool HasSize(const cups_page_header2_t& header) {
  return header.cupsWidth >= 1 && header.cupsHeight >= 1 && header.cupsWidth <= kMostLinePixels &&
         uint64_t{header.cupsWidth} * header.cupsHeight <= kMostDots;
}

}  // namespace

std::string CheckPage(const cups_page_header2_t& header) {
  if (PixelFormOf(header) == PixelForm::kUnknown) {
    return "The page's colours are of a kind that this printer does not take (colour space " +
           std::to_string(ColorSpaceOf(header)) + ", " + std::to_string(header.cupsBitsPerPixel) +
           " bits a dot); send it as RGB or grey of 8 "
           "bits a colour.";
  }
  if (!HasSize(header)) {
    return "The page says that it has " + std::to_string(header.cupsWidth) + " x " +
           std::to_string(header.cupsHeight) + " dots, which no disc needs; send it smaller.";
  }
  if (!IsResolution(header.HWResolution[0]) || !IsResolution(header.HWResolution[1])) {
    return "The page says that it has " + std::to_string(header.HWResolution[0]) + " x " +
           std::to_string(header.HWResolution[1]) + " dots an inch; send it with 300 or 600.";
  }
  const uint64_t least_bytes = uint64_t{header.cupsWidth} * header.cupsBitsPerPixel / 8;
  if (header.cupsBytesPerLine < least_bytes || IsLineTooLong(header)) {
    return "The page's lines do not have the length of its width; print the job again.";
  }
  if (header.NumCopies > kMostCopies) {
    return "The page asks for " + std::to_string(header.NumCopies) + " copies; ask for at most " +
           std::to_string(kMostCopies) + ".";
  }
  return {};
}

}  // namespace zr7700
