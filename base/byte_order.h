// The host's byte order.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_BYTE_ORDER_H_
#define ZR7700_BASE_BYTE_ORDER_H_

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

}  // namespace zr7700

#endif  // ZR7700_BASE_BYTE_ORDER_H_
