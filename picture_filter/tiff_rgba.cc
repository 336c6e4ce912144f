// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/tiff_rgba.h"

namespace zr7700 {

bool TiffRgba::Read(TIFF* tiff, Dots dots) {
  constexpr int kStopAtDamage = 1;
  char message[1024] = "";
  TIFFRGBAImage image;
  if (TIFFRGBAImageBegin(&image, tiff, kStopAtDamage, message) == 0) {
    TIFFErrorExtR(tiff, "picture", "%s", message);
    return false;
  }
  image.req_orientation = image.orientation;
  next_ = 0;
  dots_.assign(size_t{dots.width} * dots.height, 0);
  const bool read = TIFFRGBAImageGet(&image, dots_.data(), dots.width, dots.height) != 0;
  TIFFRGBAImageEnd(&image);
  return read;
}

void TiffRgba::NextLine(std::span<uint8_t> rgb) {
  for (size_t i = 0; i + 2 < rgb.size(); i += 3) {
    const uint32_t dot = dots_[next_++];
    rgb[i] = static_cast<uint8_t>(TIFFGetR(dot));
    rgb[i + 1] = static_cast<uint8_t>(TIFFGetG(dot));
    rgb[i + 2] = static_cast<uint8_t>(TIFFGetB(dot));
  }
}

}  // namespace zr7700
