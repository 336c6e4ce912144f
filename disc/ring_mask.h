// Whitens what lies off a disc: beyond its outer margin and in its hole.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DISC_RING_MASK_H_
#define ZR7700_DISC_RING_MASK_H_

#include "disc/canvas.h"
#include "disc/target_page.h"

namespace zr7700 {

// Leaves just the dots that the production filter prints of `page`, on every line: on a page of an
// odd number of lines the filter itself leaves the middle one open up to the page's edges. The
// canvas has the page's size. Any thread.
void WhitenOffTheRing(const TargetPage& page, Canvas& canvas);

}  // namespace zr7700

#endif  // ZR7700_DISC_RING_MASK_H_
