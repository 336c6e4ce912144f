// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/band.h"

#include <algorithm>

#include "base/log.h"
#include "engine/engine_entries.h"
#include "engine/line_conversion.h"

namespace zr7700 {
namespace {

// The logged byte count is that of the three colours, although four bytes a pixel were sent.
void LogRefusal(int32_t status, const uint8_t* line, uint32_t pixel_count, uint32_t y) {
  uint8_t first[9] = {};
  std::copy_n(line, std::min<size_t>(sizeof first, size_t{pixel_count} * 4), first);
  LogMessage(
      kLogDetail,
      "Error:  HPESendBand Failed err=%i y=%i numRaster=1, PixelPerRaster %u, BytesPerRaster %u, ScanLine %p %u %u %u %u %u %u %u %u %u",
      status, static_cast<int32_t>(y), pixel_count, pixel_count * 3, static_cast<const void*>(line),
      first[0], first[1], first[2], first[3], first[4], first[5], first[6], first[7], first[8]);
}

}  // namespace

bool SendLine(const JobVariables& variables, uint8_t* line, uint32_t pixel_count, uint32_t y) {
  if (!ConvertLine(variables, line, static_cast<uint16_t>(pixel_count), static_cast<uint16_t>(y))) {
    return true;
  }
  const int32_t status =
      engine_entries.HPESendBand(engineHandle, 0, y, 1, pixel_count, pixel_count * 4, line);
  if (status == HPE_OK) return true;
  LogRefusal(status, line, pixel_count, y);
  return false;
}

}  // namespace zr7700
