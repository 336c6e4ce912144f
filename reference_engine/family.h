// The two engine families and what tells them apart; docs/printer-stream.md has the tables.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_FAMILY_H_
#define ZR7700_REFERENCE_ENGINE_FAMILY_H_

#include <cstdint>

namespace zr7700::reference_engine {

enum class Family : uint8_t { kHeron = 'H', kGranite = 'G' };

// The planes in the order in which pictures hold them in memory.
enum Plane : uint8_t { kCyan, kMagenta, kYellow };
inline constexpr int kPlanes = 3;

// Drop sizes are 1 to 3; 0 is no drop.
inline constexpr int kDropSizes = 3;

// The widest line and the tallest page of the printer, in dots.
inline constexpr int kMaxWidthDots = 5100;
inline constexpr int kMaxHeightLines = 10200;

// The print head: nozzles of one colour, and how many page lines lie between two of them.
struct Head {
  int nozzles;
  int pitch_lines;
};

constexpr Head HeadOf(Family family) {
  return family == Family::kHeron ? Head{96, 2} : Head{192, 1};
}

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_FAMILY_H_
