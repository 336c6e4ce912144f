// The conversion of one raster line: what lies off the disc becomes white, the rest keeps the job's
// ink rules.
//
// A line is an array of pixels of 4 bytes, in memory order red, green, blue, pad. Clipped pixels
// become FF FF FF; every pad byte becomes 0.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_LINE_CONVERSION_H_
#define ZR7700_ENGINE_LINE_CONVERSION_H_

#include <cstdint>

#include "engine/job_variables.h"

namespace zr7700 {

// Converts the line in place: line `y` of the page, `width_pixels` pixels. False, with the line
// untouched, when it lies outside the printable band. Main thread (the job's ink tables are kept
// from line to line).
bool ConvertLine(const JobVariables& variables, uint8_t* line, uint16_t width_pixels, uint16_t y);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_LINE_CONVERSION_H_
