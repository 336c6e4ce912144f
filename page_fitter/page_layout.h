// Where the dots of a raster page go on the disc's page.
//
// A raster often covers a part of its page only: filters for pictures leave the white around them
// out and tell in the header where their dots lie (the imaging bounding box).
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PAGE_FITTER_PAGE_LAYOUT_H_
#define ZR7700_PAGE_FITTER_PAGE_LAYOUT_H_

#include <cups/raster.h>

#include "disc/placement.h"
#include "disc/target_page.h"

namespace zr7700 {

// A page of the disc's size has been laid out by the filter before and keeps its layout; any other
// is scaled and placed as a whole. What lies within a point (1/72 inch) of the page's middle is
// meant to be in the middle: headers tell places in whole points. `header` has dots and a
// resolution of at least 1. Any thread.
Place LayOut(const cups_page_header2_t& header, const TargetPage& target, Scaling scaling,
             Position position);

}  // namespace zr7700

#endif  // ZR7700_PAGE_FITTER_PAGE_LAYOUT_H_
