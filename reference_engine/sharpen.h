// Sharpening of raster lines.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_SHARPEN_H_
#define ZR7700_REFERENCE_ENGINE_SHARPEN_H_

#include <cstddef>
#include <cstdint>

namespace zr7700::reference_engine {

inline constexpr int kMinSharpening = 1;
inline constexpr int kMaxSharpening = 12;

// Moves every byte of `line` away from the mean of its four neighbours (the same channel of the
// pixels left and right, and of the lines above and below): by level / 8 of the difference, but by
// at most `level` steps, so that edges gain contrast while flat areas keep their colour. Values 0
// and 255 stay, so white stays white. `level` is 1 (least) to 12 (strongest).
// All pointers are to the first of `pixels` pixels of 4 bytes; `line` must be readable one pixel
// before and after. `out` overlaps nothing.
void SharpenLine(const uint8_t* above, const uint8_t* line, const uint8_t* below, size_t pixels,
                 int level, uint8_t* out);

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_SHARPEN_H_
