// Where a picture lies on the disc's page.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_PICTURE_PLACEMENT_H_
#define ZR7700_PICTURE_FILTER_PICTURE_PLACEMENT_H_

#include "disc/canvas.h"
#include "disc/target_page.h"
#include "picture_filter/picture.h"
#include "picture_filter/picture_options.h"

namespace zr7700 {

// The picture is drawn as it is stored, onto a page that lies as the picture does; the page is
// turned afterwards.
struct PictureLayout {
  Turn turn;      // of the page, once the picture is on it
  Dots page;      // before the turn
  Place picture;  // likewise
  double dpi;     // dots of the picture an inch on the disc, the fewer of both ways
};

// Any thread.
PictureLayout LayOutPicture(const Picture& picture, const PictureOptions& options,
                            const TargetPage& target);

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_PICTURE_PLACEMENT_H_
