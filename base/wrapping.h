// Signed 32-bit arithmetic modulo 2^32, which plain C++ leaves undefined.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_WRAPPING_H_
#define ZR7700_BASE_WRAPPING_H_

#include <cstdint>

namespace zr7700 {

constexpr int32_t WrappingAdd(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

constexpr int32_t WrappingSubtract(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

constexpr int32_t WrappingMultiply(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

// Truncates toward zero. `divisor` is not 0; the one quotient that does not fit, that of the lowest
// number and -1, wraps to the lowest number.
constexpr int32_t WrappingDivide(int32_t dividend, int32_t divisor) {
  return divisor == -1 ? WrappingSubtract(0, dividend) : dividend / divisor;
}

}  // namespace zr7700

#endif  // ZR7700_BASE_WRAPPING_H_
