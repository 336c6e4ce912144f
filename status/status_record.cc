// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/status_record.h"

#include <algorithm>

#include "base/bytes.h"
#include "engine/engine_loader.h"

namespace zr7700 {
namespace {

constexpr uint8_t kStartMark = 0x01;
constexpr uint8_t kSecondByte = 0x8E;
constexpr uint8_t kThirdByte = 0x5A;
constexpr uint8_t kEndMark = 0x04;

constexpr size_t kStatusLetter = 26;
constexpr size_t kState = 29;
constexpr size_t kErrorWord = 30;
constexpr size_t kInkCounters[] = {49, 53, 57};
constexpr size_t kAlignmentFlag = 99;
constexpr size_t kAlignmentValue6 = 102;
constexpr size_t kAlignmentValue14 = 103;
constexpr size_t kChecksum = 142;

}  // namespace

bool IsWellFormed(const PrinterStatusRecord& record) {
  const uint8_t sum = SumOfBytes(std::span(record).subspan(1, kChecksum - 1));
  return record.front() == kStartMark && record.back() == kEndMark && record[kChecksum] == sum;
}

std::optional<size_t> FindRecordStart(const PrinterStatusRecord& buffer, ptrdiff_t count) {
  for (ptrdiff_t i = 0; i < count; ++i) {
    const auto at = static_cast<size_t>(i);
    if (buffer[at] == kStartMark && buffer[(at + 1) % kStatusRecordBytes] == kSecondByte &&
        buffer[(at + 2) % kStatusRecordBytes] == kThirdByte) {
      return at;
    }
  }
  return std::nullopt;
}

char StateLetter(const PrinterStatusRecord& record) { return static_cast<char>(record[kState]); }

bool IsStatusLetterReady(const PrinterStatusRecord& record) {
  return record[kStatusLetter] == 'H' || record[kStatusLetter] == 'I';
}

uint32_t ErrorWord(const PrinterStatusRecord& record) {
  return record[kErrorWord] | uint32_t{record[kErrorWord + 1]} << 8 |
         uint32_t{record[kErrorWord + 2]} << 16;
}

uint32_t LargestInkCount(const PrinterStatusRecord& record) {
  uint32_t largest = 0;
  for (const size_t counter : kInkCounters) {
    largest = std::max(largest, LoadBigEndian32(&record[counter]));
  }
  return largest;
}

char CartridgeLetter(const PrinterStatusRecord& record) {
  return static_cast<char>(record[kCartridgeLetterOffset]);
}

uint8_t AlignmentFlag(const PrinterStatusRecord& record) { return record[kAlignmentFlag]; }

uint8_t AlignmentValue6(const PrinterStatusRecord& record) { return record[kAlignmentValue6]; }

uint8_t AlignmentValue14(const PrinterStatusRecord& record) { return record[kAlignmentValue14]; }

}  // namespace zr7700
