// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/status_record.h"

#include <numeric>

namespace zr7700::printer {
namespace {

constexpr uint8_t kStartMark = 0x01;
constexpr uint8_t kBodyBytes = 0x8E;  // the 142 bytes that follow the start mark but the last
constexpr uint8_t kRecordKind = 0x5A;
constexpr uint8_t kEndMark = 0x04;

// Where each item lies in the record.
constexpr size_t kReadyAt = 26;
constexpr size_t kStateAt = 29;
constexpr size_t kErrorWordAt = 30;
constexpr size_t kInkUseAt = 49;
constexpr size_t kCartridgeAt = 98;
constexpr size_t kAlignmentNeededAt = 99;
constexpr size_t kAlignment6At = 102;
constexpr size_t kAlignment14At = 103;
constexpr size_t kChecksumAt = 142;
constexpr size_t kEndAt = 143;

void StoreBig32(StatusRecord& record, size_t at, uint32_t value) {
  for (size_t i = 0; i < 4; ++i) record[at + i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

// The error word alone is little-endian: 24 bits, lowest byte first.
void StoreLittle24(StatusRecord& record, size_t at, uint32_t value) {
  for (size_t i = 0; i < 3; ++i) record[at + i] = static_cast<uint8_t>(value >> (8 * i));
}

}  // namespace

uint8_t RecordChecksum(std::span<const uint8_t, kRecordBytes> record) {
  const auto body = record.subspan<1, 141>();
  return static_cast<uint8_t>(std::accumulate(body.begin(), body.end(), 0u));
}

StatusRecord BuildStatusRecord(const PrinterStatus& status) {
  StatusRecord record{};
  record[0] = kStartMark;
  record[1] = kBodyBytes;
  record[2] = kRecordKind;
  record[kReadyAt] = static_cast<uint8_t>(status.ready);
  record[kStateAt] = static_cast<uint8_t>(status.state);
  StoreLittle24(record, kErrorWordAt, status.error_word);
  for (size_t ink = 0; ink < status.ink_use.size(); ++ink) {
    StoreBig32(record, kInkUseAt + 4 * ink, status.ink_use[ink]);
  }
  record[kCartridgeAt] = status.cartridge;
  record[kAlignmentNeededAt] = status.alignment_needed ? 1 : 0;
  record[kAlignment6At] = status.alignment_6;
  record[kAlignment14At] = status.alignment_14;
  record[kChecksumAt] = RecordChecksum(record);
  record[kEndAt] = kEndMark;
  return record;
}

}  // namespace zr7700::printer
