// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/sharpen.h"

#include <algorithm>

namespace zr7700::reference_engine {
namespace {

constexpr ptrdiff_t kPixelBytes = 4;

// Level 8 of 12 adds the whole difference to the mean of the four neighbours: 4 x 8.
constexpr int kFullLevel = 32;

}  // namespace

void SharpenLine(const uint8_t* above, const uint8_t* line, const uint8_t* below, size_t pixels,
                 int level, uint8_t* out) {
  // 16 bits hold everything (4 x 255 x 12 = 12240), twice as many to a vector as int.
  const auto gain = static_cast<int16_t>(level);
  const auto limit = static_cast<int16_t>(level);
  const auto floor = static_cast<int16_t>(-level);
  const auto bytes = static_cast<ptrdiff_t>(pixels) * kPixelBytes;
  for (ptrdiff_t i = 0; i < bytes; ++i) {
    const auto neighbours =
        static_cast<int16_t>(above[i] + below[i] + line[i - kPixelBytes] + line[i + kPixelBytes]);
    const auto edge = static_cast<int16_t>(4 * line[i] - neighbours);
    const auto change = static_cast<int16_t>(static_cast<int16_t>(edge * gain) / kFullLevel);
    const int16_t bounded = std::clamp(change, floor, limit);
    const auto sharp = static_cast<int16_t>(line[i] + bounded);
    out[i] = static_cast<uint8_t>(std::clamp<int16_t>(sharp, 0, 255));
  }
}

}  // namespace zr7700::reference_engine
