// Status records for tests, built from what they are to say.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_TEST_RECORDS_H_
#define ZR7700_STATUS_TEST_RECORDS_H_

#include <cstdint>
#include <numeric>

#include "status/status_record.h"

namespace zr7700 {

// The defaults are a printer that is idle, ready and content.
struct RecordValues {
  char status_letter = 'H';
  char state = 'I';
  uint32_t error_word = 0;  // 24 bits
  uint32_t ink_count1 = 0;
  uint32_t ink_count2 = 0;
  uint32_t ink_count3 = 0;
  char cartridge = 'Q';
  uint8_t alignment = 0;
  uint8_t alignment_value6 = 0;
  uint8_t alignment_value14 = 0;
  uint8_t serial = 0;  // in a byte without a meaning, to tell records apart
};

inline constexpr size_t kSerialOffset = 3;

// Puts the checksum of bytes 1 to 141 where it belongs.
inline void Seal(PrinterStatusRecord& record) {
  record[142] = static_cast<uint8_t>(std::accumulate(&record[1], &record[142], 0U) % 256U);
}

inline void PutBigEndian(PrinterStatusRecord& record, size_t offset, uint32_t value) {
  for (size_t i = 0; i < 4; i++) {
    record[offset + i] = static_cast<uint8_t>(value >> (8 * (3 - i)));
  }
}

inline PrinterStatusRecord MakeRecord(const RecordValues& values = {}) {
  PrinterStatusRecord record = {};
  record[0] = 0x01;
  record[1] = 0x8E;
  record[2] = 0x5A;
  record[kSerialOffset] = values.serial;
  record[26] = static_cast<uint8_t>(values.status_letter);
  record[29] = static_cast<uint8_t>(values.state);
  record[30] = static_cast<uint8_t>(values.error_word);
  record[31] = static_cast<uint8_t>(values.error_word >> 8);
  record[32] = static_cast<uint8_t>(values.error_word >> 16);
  PutBigEndian(record, 49, values.ink_count1);
  PutBigEndian(record, 53, values.ink_count2);
  PutBigEndian(record, 57, values.ink_count3);
  record[98] = static_cast<uint8_t>(values.cartridge);
  record[99] = values.alignment;
  record[102] = values.alignment_value6;
  record[103] = values.alignment_value14;
  record[143] = 0x04;
  Seal(record);
  return record;
}

}  // namespace zr7700

#endif  // ZR7700_STATUS_TEST_RECORDS_H_
