// The forms of pixels that pages come in, and their way to red, green and blue.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PAGE_FITTER_PIXEL_FORM_H_
#define ZR7700_PAGE_FITTER_PIXEL_FORM_H_

#include <cups/raster.h>

#include <cstdint>
#include <span>

namespace zr7700 {

enum class PixelForm {
  kUnknown,
  kRgb,    // three bytes, red first
  kWhite,  // one byte, 255 is white
  kBlack,  // one byte, 0 is white
};

// What a page's header says of its pixels: chunky, 8 bits a colour, red-green-blue (sRGB or the
// device's) or grey. kUnknown for any other form. Any thread.
PixelForm PixelFormOf(const cups_page_header2_t& header);

// One line to three bytes a dot: `line` has the form's bytes for each of rgb.size() / 3 dots. The
// two do not overlap. Any thread.
void ToRgb(PixelForm form, std::span<const uint8_t> line, std::span<uint8_t> rgb);

// Takes the colours out of a line of three bytes a dot, in place. Any thread.
void ToGrey(std::span<uint8_t> rgb);

}  // namespace zr7700

#endif  // ZR7700_PAGE_FITTER_PIXEL_FORM_H_
