// How the dots of a TIFF picture are stored.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_TIFF_FORM_H_
#define ZR7700_PICTURE_FILTER_TIFF_FORM_H_

#include <tiffio.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "picture_filter/dots_to_rgb.h"
#include "picture_filter/picture.h"

namespace zr7700 {

struct TiffForm {
  Dots dots;
  unsigned bits = 8;     // of a sample: 1, 2, 4, 8 or 16
  unsigned samples = 1;  // of a dot, those of no use here among them
  bool has_planes = false;
  uint16_t photometric = PHOTOMETRIC_RGB;
  DotForm dot;          // what TiffDots makes of it
  size_t alpha_at = 0;  // which sample is the alpha, when `dot` has one

  // Luminance and colour differences that only libtiff's own conversion reads.
  bool is_ycbcr = false;

  size_t SampleBytes() const { return bits == 16 ? 2 : 1; }
  size_t LineBytes() const { return size_t{dots.width} * samples * SampleBytes(); }
};

// The present picture's, or nothing with a sentence in `error`. JPEG inside of it is set to be
// decoded into RGB.
std::optional<TiffForm> ReadTiffForm(TIFF* tiff, std::string& error);

// Turns stored samples into dots that DotsToRgb takes. Any thread.
class TiffDots {
 public:
  TiffDots(TIFF* tiff, const TiffForm& form);

  // One line: form.samples for each dot, in bytes that hold one sample of up to 8 bits, or 16-bit
  // words; into form.dot.Bytes() for each.
  void Convert(std::span<const uint8_t> samples, std::span<uint8_t> dots) const;

 private:
  template <typename Number>
  void ConvertDot(const Number* samples, Number* dot) const;
  void TakeColourMap(TIFF* tiff);

  TiffForm form_;
  std::array<uint16_t, 4> flip_ = {};  // bits of each colour to invert
  std::array<bool, 4> widen_ = {};     // 255/256 of the range is the whole
  unsigned scale_ = 1;                 // makes the whole range of few bits that of 8
  std::vector<std::array<uint8_t, 3>> colour_map_;
};

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_TIFF_FORM_H_
