// Reads the pictures of a TIFF file with libtiff, all but previews and masks.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_TIFF_READER_H_
#define ZR7700_PICTURE_FILTER_TIFF_READER_H_

#include <cstdio>
#include <memory>

#include "picture_filter/picture.h"

namespace zr7700 {

// `file` stays the caller's, can seek and must stay open while the reader lives.
std::unique_ptr<PictureReader> MakeTiffReader(FILE* file);

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_TIFF_READER_H_
