// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/row_data.h"

namespace zr7700::printer {
namespace {

// What one control byte asks for.
struct Run {
  enum Kind { kLiteral, kRepeat, kZeros, kIllegal } kind;
  size_t bytes;
};

Run GraniteRun(uint8_t control) {
  if (control < 0x80) return {Run::kLiteral, control + 1u};
  if (control == 0x80) return {Run::kIllegal, 0};
  return {Run::kRepeat, 257u - control};
}

Run HeronRun(uint8_t control) {
  if (control < 0x80) return {Run::kLiteral, control + 1u};
  if (control < 0xC0) return {Run::kZeros, control - 0x80 + 1u};
  return {Run::kRepeat, control - 0xC0 + 2u};
}

// Fills `out` with what `data` say; both must end together.
std::string Decompress(std::span<const uint8_t> data, Run (*run_of)(uint8_t), size_t out_bytes,
                       std::vector<uint8_t>& out) {
  out.clear();
  while (!data.empty()) {
    const Run run = run_of(data[0]);
    data = data.subspan(1);
    const size_t taken = run.kind == Run::kLiteral ? run.bytes : run.kind == Run::kRepeat ? 1 : 0;
    if (run.kind == Run::kIllegal) return "The row's data hold the control byte 0x80.";
    if (taken > data.size()) return "The row's data end inside a run.";
    if (run.bytes > out_bytes - out.size()) return "The row's data decode to too many bytes.";
    if (run.kind == Run::kLiteral) {
      out.insert(out.end(), data.begin(), data.begin() + static_cast<std::ptrdiff_t>(taken));
    } else {
      out.insert(out.end(), run.bytes, run.kind == Run::kRepeat ? data[0] : uint8_t{0});
    }
    data = data.subspan(taken);
  }
  return out.size() == out_bytes ? "" : "The row's data decode to too few bytes.";
}

constexpr char kSpareBits[] = "The unused bits of the row's last byte must be 0.";

// Four cells a byte, the first in the highest bits.
std::string UnpackGranite(std::span<const uint8_t> packed, std::span<uint8_t> cells) {
  for (size_t i = 0; i < cells.size(); ++i) {
    cells[i] = packed[i / 4] >> (6 - 2 * (i % 4)) & 3;
  }
  const size_t spare_bits = 2 * (4 * packed.size() - cells.size());
  return (packed.back() & ((1u << spare_bits) - 1)) == 0 ? "" : kSpareBits;
}

// All low bits, then all high bits, the first cell in the lowest bit.
std::string UnpackHeron(std::span<const uint8_t> packed, std::span<uint8_t> cells) {
  const auto low = packed.first(packed.size() / 2);
  const auto high = packed.last(packed.size() / 2);
  for (size_t i = 0; i < cells.size(); ++i) {
    const int low_bit = low[i / 8] >> (i % 8) & 1;
    const int high_bit = high[i / 8] >> (i % 8) & 1;
    cells[i] = static_cast<uint8_t>(high_bit << 1 | low_bit);
  }
  const size_t used_bits = cells.size() - 8 * (low.size() - 1);
  return (low.back() | high.back()) >> used_bits == 0 ? "" : kSpareBits;
}

}  // namespace

std::string UnpackRow(Family family, std::span<const uint8_t> data, size_t cell_count,
                      std::vector<uint8_t>& scratch, std::vector<uint8_t>& cells) {
  const bool granite = family == Family::kGranite;
  const size_t packed_bytes = granite ? (cell_count + 3) / 4 : 2 * ((cell_count + 7) / 8);
  std::string fault = Decompress(data, granite ? GraniteRun : HeronRun, packed_bytes, scratch);
  if (!fault.empty()) return fault;
  cells.resize(cell_count);
  return granite ? UnpackGranite(scratch, cells) : UnpackHeron(scratch, cells);
}

}  // namespace zr7700::printer
