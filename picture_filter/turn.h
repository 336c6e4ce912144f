// How a picture is turned and mirrored on its way to the page.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_TURN_H_
#define ZR7700_PICTURE_FILTER_TURN_H_

#include <cstdint>
#include <optional>

#include "disc/canvas.h"

namespace zr7700 {

// Mirrored left to right first, then turned clockwise by `quarters` (0 to 3) right angles.
struct Turn {
  bool mirrored = false;
  int quarters = 0;

  bool IsNone() const { return !mirrored && quarters == 0; }
  // Width becomes height.
  bool IsOnItsSide() const { return quarters % 2 != 0; }
  bool operator==(const Turn&) const = default;
};

// `first`, and then `second`. Any thread.
Turn Then(Turn first, Turn second);

// The turn that makes a picture upright whose Exif or TIFF orientation is `orientation`; none for a
// number other than 1 to 8. Any thread.
Turn TurnOfOrientation(int64_t orientation);

// Where the part `turned` of a page of width x height dots was before the page was turned. Any
// thread.
Place BeforeTurn(Turn turn, const Place& turned, int64_t width, int64_t height);

// The whole canvas turned; nothing when there is no memory for it. Any thread.
std::optional<Canvas> Turned(Turn turn, const Canvas& canvas);

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_TURN_H_
