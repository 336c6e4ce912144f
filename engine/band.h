// Sends one raster line to the engine.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_BAND_H_
#define ZR7700_ENGINE_BAND_H_

#include <cstdint>

#include "engine/job_variables.h"

namespace zr7700 {

// Converts the line in place (line_conversion.h says how) and hands it to the engine as a band of
// one line: line `y` of the page, `pixel_count` pixels of 4 bytes. Of a line over 65,535 pixels, or
// a `y` over 65,535, the conversion sees the low 16 bits. True when the line was sent or lies
// outside the printable band, false (logged) when the engine refused it. Main thread.
bool SendLine(const JobVariables& variables, uint8_t* line, uint32_t pixel_count, uint32_t y);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_BAND_H_
