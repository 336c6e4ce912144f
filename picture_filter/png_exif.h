// Finds the Exif data of a PNG file.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_PNG_EXIF_H_
#define ZR7700_PICTURE_FILTER_PNG_EXIF_H_

#include <cstdint>
#include <cstdio>
#include <vector>

namespace zr7700 {

// The content of the chunk eXIf, which may stand behind the picture; empty without one, or when it
// is longer than Exif data are (64 kilobytes). `file` is left anywhere. Any thread.
std::vector<uint8_t> FindPngExif(FILE* file);

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_PNG_EXIF_H_
