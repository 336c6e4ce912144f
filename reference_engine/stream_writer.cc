// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/stream_writer.h"

#include <zlib.h>

#include "reference_engine/row_packing.h"

namespace zr7700::reference_engine {
namespace {

// Long enough to make calls rare, short enough to stay in the second-level cache.
constexpr size_t kBlockBytes = 64 << 10;

// A block is handed over when it is longer than that; the longest row has some 3 kB, and the
// commands between two rows have less than 100 bytes.
constexpr size_t kBlockCapacityBytes = 2 * kBlockBytes;

void AppendPrefix(Command command, std::vector<uint8_t>* block) {
  const auto name = static_cast<uint16_t>(command);
  block->insert(block->end(),
                {0x1B, 0x2A, static_cast<uint8_t>(name >> 8), static_cast<uint8_t>(name & 0xFF)});
}

}  // namespace

uint32_t UpdateCrc32(uint32_t crc, std::span<const uint8_t> bytes) {
  return static_cast<uint32_t>(crc32_z(crc, bytes.data(), bytes.size()));
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
