// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/stream_writer.h"

#include <array>

#include "reference_engine/row_packing.h"

namespace zr7700::reference_engine {
namespace {

// Long enough to make calls rare, short enough to stay in the second-level cache.
constexpr size_t kBlockBytes = 64 << 10;

// A block is handed over when it is longer than that; the longest row has some 3 kB, and the
// commands between two rows have less than 100 bytes.
constexpr size_t kBlockCapacityBytes = 2 * kBlockBytes;

constexpr size_t kCrcSlices = 8;
using CrcTables = std::array<std::array<uint32_t, 256>, kCrcSlices>;

// Table s advances a byte over s further zero bytes, which lets eight bytes go at once.
constexpr CrcTables MakeCrcTables() {
  CrcTables tables = {};
  for (uint32_t byte = 0; byte < 256; ++byte) {
    uint32_t crc = byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? crc >> 1 ^ 0xEDB88320U : crc >> 1;
    tables[0][byte] = crc;
  }
  for (size_t slice = 1; slice < kCrcSlices; ++slice)
    for (size_t byte = 0; byte < 256; ++byte) {
      const uint32_t crc = tables[slice - 1][byte];
      tables[slice][byte] = crc >> 8 ^ tables[0][crc & 0xFF];
    }
  return tables;
}

constexpr CrcTables kCrcTables = MakeCrcTables();

uint32_t LoadLittle32(const uint8_t* bytes) {
  return bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}

uint32_t CrcOfEight(uint32_t crc, const uint8_t* bytes) {
  const uint32_t low = LoadLittle32(bytes) ^ crc;
  const uint32_t high = LoadLittle32(bytes + 4);
  return kCrcTables[7][low & 0xFF] ^ kCrcTables[6][low >> 8 & 0xFF] ^
         kCrcTables[5][low >> 16 & 0xFF] ^ kCrcTables[4][low >> 24] ^ kCrcTables[3][high & 0xFF] ^
         kCrcTables[2][high >> 8 & 0xFF] ^ kCrcTables[1][high >> 16 & 0xFF] ^
         kCrcTables[0][high >> 24];
}

void AppendPrefix(Command command, std::vector<uint8_t>* block) {
  const auto name = static_cast<uint16_t>(command);
  block->insert(block->end(),
                {0x1B, 0x2A, static_cast<uint8_t>(name >> 8), static_cast<uint8_t>(name & 0xFF)});
}

}  // namespace

uint32_t UpdateCrc32(uint32_t crc, std::span<const uint8_t> bytes) {
  crc = ~crc;
  size_t i = 0;
  for (; i + 8 <= bytes.size(); i += 8) crc = CrcOfEight(crc, &bytes[i]);
  for (; i < bytes.size(); ++i) crc = crc >> 8 ^ kCrcTables[0][(crc ^ bytes[i]) & 0xFF];
  return ~crc;
}

Payload& Payload::U8(uint32_t value) {
  bytes_[length_bytes_++] = static_cast<uint8_t>(value);
  return *this;
}
Payload& Payload::U16(uint32_t value) { return U8(value >> 8).U8(value); }
Payload& Payload::U32(uint32_t value) { return U16(value >> 16).U16(value); }

void StreamWriter::Open(HPEOutputCallback output, void* context) {
  output_ = output;
  context_ = context;
  block_.clear();
  block_.reserve(kBlockCapacityBytes);
  counted_bytes_ = 0;
}

void StreamWriter::Append(Command command, const Payload& payload) {
  AppendPrefix(command, &block_);
  AppendEscaped(payload.bytes(), &block_);
}

void StreamWriter::Send(Command command, const Payload& payload) {
  if (command != Command::kFeed) {
    Append(command, payload);
    return;
  }
  Flush();
  AppendPrefix(command, &block_);
  block_.insert(block_.end(), payload.bytes().begin(), payload.bytes().end());
  counted_bytes_ = block_.size();
  Flush();
}

void StreamWriter::SendRow(const Payload& fixed_part, std::span<const uint8_t> escaped_data) {
  Append(Command::kRow, fixed_part);
  block_.insert(block_.end(), escaped_data.begin(), escaped_data.end());
  if (block_.size() >= kBlockBytes) Flush();
}

void StreamWriter::CountCrc() {
  crc_ = UpdateCrc32(crc_, std::span(block_).subspan(counted_bytes_));
  counted_bytes_ = block_.size();
}

void StreamWriter::RestartCrc() {
  counted_bytes_ = block_.size();
  crc_ = 0;
}

uint32_t StreamWriter::Crc() {
  CountCrc();
  return crc_;
}

void StreamWriter::Flush() {
  if (block_.empty()) return;
  CountCrc();
  // However the callback returns.
  struct Emptying {
    StreamWriter* writer;
    ~Emptying() {
      writer->block_.clear();
      writer->counted_bytes_ = 0;
    }
  } const emptying = {this};
  output_(context_, block_.data(), static_cast<uint32_t>(block_.size()));
}

}  // namespace zr7700::reference_engine
