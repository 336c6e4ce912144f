// The data of a row: decompressing and unpacking them as each family packs them.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_ROW_DATA_H_
#define ZR7700_VIRTUAL_PRINTER_ROW_DATA_H_

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "virtual_printer/stream_formats.h"

namespace zr7700::printer {

// Unpacks `data`, the data of a row of `cell_count` cells (1 to 5100), into `cells`, a size from 0
// (none) to 3 (large) each. Nothing is wrong when the result is empty; else it is one sentence, and
// `cells` holds nothing of use. `scratch` is memory for the unpacking, to be used again and again.
// Any thread, with buffers of its own.
std::string UnpackRow(Family family, std::span<const uint8_t> data, size_t cell_count,
                      std::vector<uint8_t>& scratch, std::vector<uint8_t>& cells);

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_ROW_DATA_H_
