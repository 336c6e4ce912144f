// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/ink_line.h"

#include "reference_engine/ink_line_paths.h"

namespace zr7700::reference_engine {
namespace {

uint32_t NodeIndex(const uint8_t* pixel, uint32_t dither) {
  const uint32_t red = (WidenInput(pixel[0]) + dither) >> kTableStepShift;
  const uint32_t green = (WidenInput(pixel[1]) + dither) >> kTableStepShift;
  const uint32_t blue = (WidenInput(pixel[2]) + dither) >> kTableStepShift;
  return (red * kTableNodes + green) * kTableNodes + blue;
}

}  // namespace

void LookUpInksPlain(const uint8_t* pixels, const CellRun& run, const InkNode* nodes,
                     uint8_t* const codes[kPlanes]) {
  uint8_t* const cyan = codes[kCyan];
  uint8_t* const magenta = codes[kMagenta];
  uint8_t* const yellow = codes[kYellow];
  const uint8_t* pixel = pixels + run.first_column * kPixelBytes;
  uint32_t dither = run.first_column * kDitherPerColumn + run.line * kDitherPerLine;
  for (uint32_t i = 0; i < run.cells; ++i) {
    const InkNode inks = nodes[NodeIndex(pixel, dither & kDitherMask)];
    cyan[i] = static_cast<uint8_t>(inks);
    magenta[i] = static_cast<uint8_t>(inks >> 8);
    yellow[i] = static_cast<uint8_t>(inks >> 16);
    pixel += run.step * kPixelBytes;
    dither += run.step * kDitherPerColumn;
  }
}

void LookUpInks(const uint8_t* pixels, const CellRun& run, const InkNode* nodes,
                uint8_t* const codes[kPlanes]) {
  static const auto path = HasAvx2() ? LookUpInksAvx2 : LookUpInksPlain;
  path(pixels, run, nodes, codes);
}

}  // namespace zr7700::reference_engine
