// Writes the commands of docs/printer-stream.md into blocks and hands the blocks on.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_STREAM_WRITER_H_
#define ZR7700_REFERENCE_ENGINE_STREAM_WRITER_H_

#include <cstdint>
#include <span>
#include <vector>

#include "reference_engine/family.h"
#include "zr7700/host_print_engine.h"

namespace zr7700::reference_engine {

// The names of the commands: class in the high byte, code in the low one.
enum class Command : uint16_t {
  kDocumentStart = 0x0162,
  kDocumentEnd = 0x0165,
  kPageStart = 0x0262,
  kPageEnd = 0x0265,
  kPageAbort = 0x0261,
  kPassStart = 0x0362,
  kRow = 0x0472,
  kFeed = 0x0766,
};

// CRC-32 (reflected 0xEDB88320) of `bytes`, going on from `crc`, which is 0 at the beginning.
uint32_t UpdateCrc32(uint32_t crc, std::span<const uint8_t> bytes);

// A payload of fixed size under construction, most significant bytes first.
class Payload {
 public:
  Payload& U8(uint32_t value);
  Payload& U16(uint32_t value);
  Payload& U32(uint32_t value);
  std::span<const uint8_t> bytes() const { return {bytes_, length_bytes_}; }

 private:
  // The longest payload is page-start's 42 bytes.
  uint8_t bytes_[48];
  size_t length_bytes_ = 0;
};

// Main use: Send for everything but rows, SendRow for rows, Flush at the end of an entry. A block
// counts as handed over as soon as `output` is called: what `output` throws passes through, and the
// block does not come again. Send throws for nothing but a feed.
class StreamWriter {
 public:
  // Sends to `output` with `context` from now on. Takes all the memory that the writer ever needs
  // and throws std::bad_alloc when there is none; nothing else here lacks memory.
  void Open(HPEOutputCallback output, void* context);

  // Appends a command; `payload` is escaped on the way unless the command is a feed, which also
  // gets a block of its own.
  void Send(Command command, const Payload& payload);

  // Appends a row command from its fixed part and its data, which is escaped already.
  void SendRow(const Payload& fixed_part, std::span<const uint8_t> escaped_data);

  // Hands over what has gathered.
  void Flush();

  // The CRC-32 of everything sent since RestartCrc, feeds left out.
  void RestartCrc();
  uint32_t Crc();

 private:
  void Append(Command command, const Payload& payload);
  void CountCrc();

  HPEOutputCallback output_ = nullptr;
  void* context_ = nullptr;
  std::vector<uint8_t> block_;
  // How much of the block the CRC holds.
  size_t counted_bytes_ = 0;
  uint32_t crc_ = 0;
};

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_STREAM_WRITER_H_
