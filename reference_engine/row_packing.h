// From drop sizes to the bytes of a row command: packing, compression and escaping, as
// docs/printer-stream.md describes them.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_ROW_PACKING_H_
#define ZR7700_REFERENCE_ENGINE_ROW_PACKING_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "reference_engine/family.h"

namespace zr7700::reference_engine {

// Appends `bytes` to `out`, escaped for a payload.
void AppendEscaped(std::span<const uint8_t> bytes, std::vector<uint8_t>* out);

// The cells of `levels` from the first drop to the last one, and how many drops there are. An empty
// span when there is none.
struct Drops {
  size_t first_cell = 0;
  std::span<const uint8_t> levels;
  uint32_t count = 0;
};
Drops FindDrops(std::span<const uint8_t> levels);

// Packs rows of one family. Keeps its scratch space between rows.
class RowPacker {
 public:
  explicit RowPacker(Family family) : family_(family) {}

  // Appends the packed, compressed and escaped data of `levels` (each 0 to 3) to `out`.
  void Append(std::span<const uint8_t> levels, std::vector<uint8_t>* out);

 private:
  Family family_;
  std::vector<uint8_t> padded_;
  std::vector<uint8_t> packed_;
  std::vector<uint8_t> compressed_;
};

// The two compressions, each appending to `out`.
void CompressGranite(std::span<const uint8_t> bytes, std::vector<uint8_t>* out);
void CompressHeron(std::span<const uint8_t> bytes, std::vector<uint8_t>* out);

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_ROW_PACKING_H_
