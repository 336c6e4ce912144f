// The printer's status record: 144 bytes that say what the printer is doing and what it lacks.
// docs/status-record.md has the layout.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_STATUS_RECORD_H_
#define ZR7700_VIRTUAL_PRINTER_STATUS_RECORD_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zr7700::printer {

inline constexpr size_t kRecordBytes = 144;
using StatusRecord = std::array<uint8_t, kRecordBytes>;

// Bits of the error word.
inline constexpr uint32_t kErrorInk = 0x10;       // ink low or empty; the counters tell which
inline constexpr uint32_t kErrorBinEmpty = 0x24;  // both bits together: no disc in the input bin

// What one record says.
struct PrinterStatus {
  char state = 'I';                   // 'B' busy, 'I' idle
  char ready = 'I';                   // 'H' or 'I' while the printer takes jobs
  uint32_t error_word = 0;            // 24 bits
  std::array<uint32_t, 3> ink_use{};  // ink-use counts: cyan, magenta, yellow
  uint8_t cartridge = 'Q';            // a letter, or 0x20 to 0x2F for no cartridge
  bool alignment_needed = false;
  uint8_t alignment_6 = 0;   // the engine's alignment item 6
  uint8_t alignment_14 = 0;  // the engine's alignment item 14
};

// The record that says `status`, well formed. Any thread.
StatusRecord BuildStatusRecord(const PrinterStatus& status);

// The sum of bytes 1 to 141 modulo 256: what byte 142 must hold. Any thread.
uint8_t RecordChecksum(std::span<const uint8_t, kRecordBytes> record);

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_STATUS_RECORD_H_
