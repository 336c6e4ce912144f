// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/clip_range.h"

#include <cstring>

#include "engine/clip_buffers.h"

namespace zr7700 {

bool GetClipRange(const JobVariables& variables, uint16_t y, uint16_t width, ClipRange& range) {
  if (variables.clipDataBufs == nullptr || y >= variables.clipBufferBytes / kClipEntryBytes) {
    return false;
  }
  ClipEntry entry;
  memcpy(&entry, variables.clipDataBufs + size_t{y} * kClipEntryBytes, kClipEntryBytes);
  const auto no_limit = static_cast<uint16_t>(variables.maxImageDots);
  const unsigned half = width / 2U;

  range = {.outer_high = no_limit, .outer_low = 0, .inner_high = 0, .inner_low = no_limit};
  if (entry.outer != 0 && entry.outer < half) {
    range.outer_high = static_cast<uint16_t>(half + entry.outer);
    range.outer_low = static_cast<uint16_t>(half - entry.outer);
  }
  // Held against the whole width, unlike the outer value: a hole wider than the line wraps its low
  // limit, so that nothing lies inside.
  if (entry.inner != 0 && entry.inner < width) {
    range.inner_high = static_cast<uint16_t>(half + entry.inner);
    range.inner_low = static_cast<uint16_t>(half - entry.inner);
  }
  return true;
}

}  // namespace zr7700
