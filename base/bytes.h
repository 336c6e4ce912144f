// Bytes as numbers, at addresses of any alignment. Plain functions: any thread.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_BYTES_H_
#define ZR7700_BASE_BYTES_H_

#include <cstdint>
#include <span>

namespace zr7700 {

// Reads the 4 bytes at `bytes`, most significant first.
constexpr uint32_t LoadBigEndian32(const uint8_t* bytes) {
  return (uint32_t{bytes[0]} << 24) | (uint32_t{bytes[1]} << 16) | (uint32_t{bytes[2]} << 8) |
         uint32_t{bytes[3]};
}

// Writes `value` into the 4 bytes at `bytes`, most significant first.
constexpr void StoreBigEndian32(uint32_t value, uint8_t* bytes) {
  bytes[0] = static_cast<uint8_t>(value >> 24);
  bytes[1] = static_cast<uint8_t>(value >> 16);
  bytes[2] = static_cast<uint8_t>(value >> 8);
  bytes[3] = static_cast<uint8_t>(value);
}

// The sum of all bytes modulo 256, the checksum of everything on this printer's cable.
constexpr uint8_t SumOfBytes(std::span<const uint8_t> bytes) {
  unsigned sum = 0;
  for (const uint8_t byte : bytes) sum += byte;
  return static_cast<uint8_t>(sum);
}

}  // namespace zr7700

#endif  // ZR7700_BASE_BYTES_H_
