// The engine's own codes for print quality and media.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_ENGINE_CODES_H_
#define ZR7700_ENGINE_ENGINE_CODES_H_

#include <cstdint>

namespace zr7700 {

struct EngineCode {
  uint16_t code;
  const char* log_text;  // a constant
};

// The engine's code for the job's print quality (1 to 4; any other number counts as 4). Any thread.
EngineCode QualityCode(bool is_heron, uint8_t print_quality);

// The engine's code for the job's media type (1 to 5, or another number). Any thread.
EngineCode MediaCode(bool is_heron, uint8_t disc_surface_quality);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_ENGINE_CODES_H_
