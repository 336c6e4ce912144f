// The printer's status record, 144 bytes exactly as received, and what the filter reads from it.
// docs/status-record.md describes every byte. Plain functions of their arguments: any thread.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_STATUS_RECORD_H_
#define ZR7700_STATUS_STATUS_RECORD_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace zr7700 {

inline constexpr size_t kStatusRecordBytes = 144;

using PrinterStatusRecord = std::array<uint8_t, kStatusRecordBytes>;

inline constexpr char kStateBusy = 'B';
inline constexpr char kStateIdle = 'I';

// Bits of the error word.
inline constexpr uint32_t kErrorInk = 0x10;
inline constexpr uint32_t kErrorBinEmpty = 0x04 | 0x20;  // both together

// True when the record's marks and its checksum are right.
bool IsWellFormed(const PrinterStatusRecord& record);

// Where a record begins within the first `count` bytes of `buffer`, by its first three bytes, which
// may run over the buffer's end to its start; nothing when none does.
std::optional<size_t> FindRecordStart(const PrinterStatusRecord& buffer, ptrdiff_t count);

// The printer's state letter: kStateBusy, kStateIdle, or another.
char StateLetter(const PrinterStatusRecord& record);

// True when the printer's status letter says that it is ready ('H' or 'I').
bool IsStatusLetterReady(const PrinterStatusRecord& record);

// The 24-bit error word; 0 when the printer reports no error.
uint32_t ErrorWord(const PrinterStatusRecord& record);

// The largest of the three ink-use counters.
uint32_t LargestInkCount(const PrinterStatusRecord& record);

char CartridgeLetter(const PrinterStatusRecord& record);

// The flag that the cartridge needs aligning, 0 when it does not; and the two alignment values.
uint8_t AlignmentFlag(const PrinterStatusRecord& record);
uint8_t AlignmentValue6(const PrinterStatusRecord& record);
uint8_t AlignmentValue14(const PrinterStatusRecord& record);

}  // namespace zr7700

#endif  // ZR7700_STATUS_STATUS_RECORD_H_
