// Puts a picture onto the disc's page.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_PICTURE_PAGE_H_
#define ZR7700_PICTURE_FILTER_PICTURE_PAGE_H_

#include <optional>
#include <string>

#include "disc/canvas.h"
#include "disc/target_page.h"
#include "picture_filter/picture.h"
#include "picture_filter/picture_placement.h"

namespace zr7700 {

// The page with the reader's present picture, of which every line has been read without a
// complaint; otherwise nothing, with a sentence in `error`. What is off the disc's ring is still
// there. One reader at a time, any thread.
std::optional<Canvas> DrawPicture(PictureReader& reader, const PictureLayout& layout,
                                  std::string& error);

// A sentence for the person when the picture has too few dots for the disc; empty otherwise. Any
// thread.
std::string BlurWarning(const PictureLayout& layout, const TargetPage& target);

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_PICTURE_PAGE_H_
