// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/plain_conversion.h"

#include <cstring>

#include "base/byte_order.h"
#include "engine/clip_range.h"
#include "engine/ink.h"

namespace zr7700 {
namespace {

constexpr int kPixelBytes = 4;
constexpr int kPadByte = 3;
// The same bytes in either byte order.
constexpr uint32_t kWhite = SwapBytes32(0xFFFFFFFFU);

bool IsClipped(const ClipRange& range, int n) {
  return n > range.outer_high || n < range.outer_low ||
         (n < range.inner_high && n > range.inner_low);
}

}  // namespace

bool ConvertLinePlainly(const JobVariables& variables, uint8_t* line, uint16_t width_pixels,
                        uint16_t y) {
  if (!IsInPrintableBand(variables, y)) return false;
  const InkRules rules = InkRulesOf(variables);
  ClipRange range;
  const bool clipping = GetClipRange(variables, y, width_pixels, range);
  for (int n = width_pixels; n > 0; --n, line += kPixelBytes) {
    if (clipping && IsClipped(range, n)) {
      memcpy(line, &kWhite, kPixelBytes);
    } else if (!rules.ChangesNothing()) {
      ApplyInkRules(rules, line);
    }
    line[kPadByte] = 0;
  }
  return true;
}

}  // namespace zr7700
