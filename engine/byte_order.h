// The host's byte order, and big-endian numbers at an address of any alignment.
#ifndef ZR7700_ENGINE_BYTE_ORDER_H_
#define ZR7700_ENGINE_BYTE_ORDER_H_

#include <bit>
#include <cstdint>

namespace zr7700 {

inline constexpr int kLittleEndianHost = 1;
inline constexpr int kBigEndianHost = 2;

// Which of the two this host is.
constexpr int HostByteOrder() {
  return std::endian::native == std::endian::big ? kBigEndianHost : kLittleEndianHost;
}

// `value` with its four bytes reversed.
constexpr uint32_t SwapBytes32(uint32_t value) {
  return (value >> 24) | ((value >> 8) & 0x0000FF00U) | ((value << 8) & 0x00FF0000U) |
         (value << 24);
}

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

}  // namespace zr7700

#endif  // ZR7700_ENGINE_BYTE_ORDER_H_
