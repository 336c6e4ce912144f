// A TIFF picture as libtiff itself turns it into red, green and blue: for luminance and colour
// differences, which come in as many ways as there are samplings.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_TIFF_RGBA_H_
#define ZR7700_PICTURE_FILTER_TIFF_RGBA_H_

#include <tiffio.h>

#include <cstdint>
#include <span>
#include <vector>

#include "picture_filter/picture.h"

namespace zr7700 {

// Not for use by two threads at once.
class TiffRgba {
 public:
  // The present picture, as it is stored; false when it is damaged.
  bool Read(TIFF* tiff, Dots dots);

  // The next line from the top, three bytes a dot.
  void NextLine(std::span<uint8_t> rgb);

 private:
  std::vector<uint32_t> dots_;
  size_t next_ = 0;
};

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_TIFF_RGBA_H_
