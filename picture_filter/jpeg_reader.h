// Reads a JPEG file with libjpeg.
//
// Large pictures are decoded at a half, a quarter or an eighth of their size, which libjpeg does
// several times as fast. Grey, YCbCr, RGB, CMYK and YCCK; inks are stored inverted when an Adobe
// marker is there, as that program began it, and straight without one.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_JPEG_READER_H_
#define ZR7700_PICTURE_FILTER_JPEG_READER_H_

#include <cstdio>
#include <memory>

#include "picture_filter/picture.h"

namespace zr7700 {

// `file` stays the caller's, can seek and must stay open while the reader lives.
std::unique_ptr<PictureReader> MakeJpegReader(FILE* file);

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_JPEG_READER_H_
