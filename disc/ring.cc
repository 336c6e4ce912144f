// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/ring.h"

#include <cmath>

namespace zr7700 {
namespace {

// The horizontal radius is the vertical one times the square root of 1 minus this.
constexpr double kNarrowing = 0.00343396;

}  // namespace

int32_t MarginDots(int32_t tenths_mm) {
  // Multiplied modulo 2^32, divided signed.
  return static_cast<int32_t>(static_cast<uint32_t>(tenths_mm) * 600U) / 254;
}

uint32_t HoleRadiusDots(uint32_t tenths_mm) { return (tenths_mm & 0xFFFFU) * 300U / 254U; }

uint16_t OutlineHalfWidth(uint32_t diameter_dots, int from_middle) {
  const double d = (diameter_dots * diameter_dots) >> 2;
  const double h = diameter_dots / 2;  // whole dots. NOLINT(bugprone-integer-division)
  const double t = from_middle;
  return TruncatedRoot((d - (kNarrowing * h) * h) * (1.0 - t * t / d));
}

uint16_t HoleHalfWidth(uint32_t diameter_dots, uint32_t twice_from_middle) {
  const uint16_t root =
      TruncatedRoot(diameter_dots * diameter_dots - twice_from_middle * twice_from_middle);
  return static_cast<uint16_t>(root >> 1);
}

uint16_t TruncatedRoot(double square) {
  return square > 0 ? static_cast<uint16_t>(static_cast<uint32_t>(std::sqrt(square))) : uint16_t{0};
}

}  // namespace zr7700
