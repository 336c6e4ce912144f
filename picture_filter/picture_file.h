// Tells by a file's first bytes what kind of picture it is.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_PICTURE_FILE_H_
#define ZR7700_PICTURE_FILTER_PICTURE_FILE_H_

#include <cstdio>
#include <memory>
#include <string>

#include "picture_filter/picture.h"

namespace zr7700 {

// A reader of the file's pictures, or nothing with a sentence in `error`. `file` can seek, stays
// the caller's and must stay open while the reader lives. Any thread.
std::unique_ptr<PictureReader> OpenPictureFile(FILE* file, std::string& error);

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_PICTURE_FILE_H_
