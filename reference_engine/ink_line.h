// From a raster line to ink codes.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_INK_LINE_H_
#define ZR7700_REFERENCE_ENGINE_INK_LINE_H_

#include <cstddef>
#include <cstdint>

#include "reference_engine/color_table.h"
#include "reference_engine/family.h"

namespace zr7700::reference_engine {

inline constexpr size_t kPixelBytes = 4;

// The columns first, first + step, first + 2 x step ... of one page line: `cells` of them.
struct CellRun {
  uint32_t line;
  uint32_t first_column;
  uint32_t step;
  uint32_t cells;
};

// Looks up the inks of the run's pixels in `nodes` (a ColorTable's) and stores their codes in
// codes[plane][0 .. cells - 1]. `pixels` is the whole line: red, green, blue and an unused byte.
// Between the table's nodes an ordered pattern picks the lower or the upper one as often as the
// pixel is near it, which on average interpolates. White gives 0, 0, 0.
void LookUpInks(const uint8_t* pixels, const CellRun& run, const InkNode* nodes,
                uint8_t* const codes[kPlanes]);

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_INK_LINE_H_
