// A printed disc as a picture, and where on the disc its drops lie.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_DISC_PICTURE_H_
#define ZR7700_VIRTUAL_PRINTER_DISC_PICTURE_H_

#include <cstdint>

#include "virtual_printer/picture_file.h"
#include "virtual_printer/stream_decoder.h"

namespace zr7700::printer {

// The disc under a page. Dots are dots of the page's grid; column and line 0 touch the left and
// upper edge of the square around the disc.
struct DiscPlace {
  int diameter_mm = 0;     // 80 or 120
  uint32_t side_dots = 0;  // of the square around the disc
  int64_t left_dots = 0;   // where page column 0 lies
  int64_t top_dots = 0;    // where page line 0 lies
};

// Where the page lies: on the smaller of an 80 mm and a 120 mm disc that holds it, else on the
// latter. `diameter_mm` 80 or 120 asks for that disc. The page-start must be legal. Any thread.
DiscPlace PlaceDisc(const PrintedPage& page, int diameter_mm = 0);

// The dots that hold drops, in dots of the square around the disc; the box is empty (right below
// left) when there is none. A dot lies where its middle lies. The hole is 15 mm wide.
struct DotsOnDisc {
  int64_t left = 0, top = 0, right = -1, bottom = -1;
  uint64_t outside = 0;  // beyond the disc's edge
  uint64_t in_hole = 0;
};

DotsOnDisc MeasureDots(const PrintedPage& page, const DiscPlace& place);

// The square around the disc, a pixel a dot; drops beyond it are left out. Any thread.
IndexedPicture DrawDots(const PrintedPage& page, const DiscPlace& place);

// The same at 150 pixels an inch (means of linear light), with the disc's outline and hole drawn
// and a border of background around it. Any thread.
RgbPicture DrawDisc(const PrintedPage& page, const DiscPlace& place);

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_DISC_PICTURE_H_
