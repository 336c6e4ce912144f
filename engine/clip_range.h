// What the clip table means for one line of a given width.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_CLIP_RANGE_H_
#define ZR7700_ENGINE_CLIP_RANGE_H_

#include <cstdint>

#include "engine/job_variables.h"

namespace zr7700 {

// A line's pixels are counted down from its width n at the first pixel to 1 at the last. A pixel is
// clipped when n > outer_high, n < outer_low, or inner_low < n < inner_high.
struct ClipRange {
  uint16_t outer_high;
  uint16_t outer_low;
  uint16_t inner_high;
  uint16_t inner_low;
};

// Fills `range` for line `y` of `width` pixels. False, with `range` untouched, when there is
// nothing to clip by: no table, or a line that it does not reach. Any thread.
bool GetClipRange(const JobVariables& variables, uint16_t y, uint16_t width, ClipRange& range);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_CLIP_RANGE_H_
