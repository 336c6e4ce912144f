// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "page_fitter/pixel_form.h"

#include <algorithm>

#include "disc/raster_header.h"

namespace zr7700 {
namespace {

struct FormRow {
  uint32_t color_space;
  unsigned bits_per_pixel;
  PixelForm form;
};
constexpr FormRow kForms[] = {
    {CUPS_CSPACE_RGB, 24, PixelForm::kRgb}, {CUPS_CSPACE_SRGB, 24, PixelForm::kRgb},
    {CUPS_CSPACE_W, 8, PixelForm::kWhite},  {CUPS_CSPACE_SW, 8, PixelForm::kWhite},
    {CUPS_CSPACE_K, 8, PixelForm::kBlack},
};

void Widen(std::span<const uint8_t> line, uint8_t flip, std::span<uint8_t> rgb) {
  for (size_t i = 0; i < rgb.size(); ++i) rgb[i] = line[i / 3] ^ flip;
}

}  // namespace

PixelForm PixelFormOf(const cups_page_header2_t& header) {
  if (header.cupsBitsPerColor != 8 || ColorOrderOf(header) != CUPS_ORDER_CHUNKED) {
    return PixelForm::kUnknown;
  }
  for (const FormRow& row : kForms) {
    if (row.color_space == ColorSpaceOf(header) && row.bits_per_pixel == header.cupsBitsPerPixel) {
      return row.form;
    }
  }
  return PixelForm::kUnknown;
}

void ToRgb(PixelForm form, std::span<const uint8_t> line, std::span<uint8_t> rgb) {
  if (form == PixelForm::kRgb) {
    std::copy_n(line.begin(), rgb.size(), rgb.begin());
  } else {
    Widen(line, form == PixelForm::kBlack ? 0xFF : 0, rgb);
  }
}

void ToGrey(std::span<uint8_t> rgb) {
  for (size_t i = 0; i + 2 < rgb.size(); i += 3) {
    // The shares of the three in what the eye takes for brightness, in 1/100.
    const int grey = (31 * rgb[i] + 61 * rgb[i + 1] + 8 * rgb[i + 2] + 50) / 100;
    std::fill_n(rgb.begin() + static_cast<std::ptrdiff_t>(i), 3, static_cast<uint8_t>(grey));
  }
}

}  // namespace zr7700
