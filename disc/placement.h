// Where a picture or a page lies on the disc's page.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DISC_PLACEMENT_H_
#define ZR7700_DISC_PLACEMENT_H_

#include <cups/cups.h>

#include "disc/canvas.h"

namespace zr7700 {

// The job option print-scaling.
enum class Scaling {
  kUnset,  // not given: every filter has its own habit
  kAuto,   // as it is when it fits on the page, else kFit
  kFit,    // all of it, as large as the page allows
  kFill,   // no part of the page stays empty; what is too much is cut off evenly
  kNone,   // as large as it is; what is too much is cut off evenly
};

// The job option position: -1 left or top, 0 in the middle, 1 right or bottom.
struct Position {
  int horizontal = 0;
  int vertical = 0;
};

struct Size {
  double width = 0;
  double height = 0;
};

// auto-fit is taken as auto. A value that the option does not have counts as unset. Any thread.
Scaling ScalingOf(int option_count, cups_option_t* options);

// A value that the option does not have counts as the middle. Any thread.
Position PositionOf(int option_count, cups_option_t* options);

// How much larger something of the size `natural` becomes on the page. kUnset is taken as kAuto.
// Both sizes in the same unit and above 0. Any thread.
double ScaleFor(Scaling scaling, Size natural, Size page);

// The place of something of `width` x `height` dots on a page of `page_width` x `page_height`. In
// the middle it is off by half a dot at most. Any thread.
Place PlaceAt(Position position, int64_t width, int64_t height, int64_t page_width,
              int64_t page_height);

}  // namespace zr7700

#endif  // ZR7700_DISC_PLACEMENT_H_
