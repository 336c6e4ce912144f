// The line conversion pixel by pixel and without tables: the plain form that ConvertLine
// (line_conversion.h) equals bit for bit. No job takes this road; tests and fuzzers compare with
// it.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_PLAIN_CONVERSION_H_
#define ZR7700_ENGINE_PLAIN_CONVERSION_H_

#include <cstdint>

#include "engine/job_variables.h"

namespace zr7700 {

// Converts the line as ConvertLine does. Any thread.
bool ConvertLinePlainly(const JobVariables& variables, uint8_t* line, uint16_t width_pixels,
                        uint16_t y);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_PLAIN_CONVERSION_H_
