// The drops of one page, laid on its grid.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_PAGE_CANVAS_H_
#define ZR7700_VIRTUAL_PRINTER_PAGE_CANVAS_H_

#include <array>
#include <cstdint>
#include <vector>

#include "virtual_printer/stream_formats.h"

namespace zr7700::printer {

// Drops of one ink by size: small, medium, large.
inline constexpr size_t kDropSizes = 3;
using DropCounts = std::array<uint64_t, kDropSizes>;
inline constexpr std::array<const char*, kDropSizes> kDropNames = {"small", "medium", "large"};

// Ink in a drop of each size, in picolitres; the printer's ink-use counters count picolitres.
inline constexpr std::array<uint64_t, kDropSizes> kDropPicolitres = {4, 8, 12};

inline uint64_t Picolitres(const DropCounts& drops) {
  return drops[0] * kDropPicolitres[0] + drops[1] * kDropPicolitres[1] +
         drops[2] * kDropPicolitres[2];
}

// A dot is a byte: bits 0-1 the size of its cyan drop, 2-3 magenta, 4-5 yellow.
inline constexpr size_t kDotKinds = 64;
inline unsigned DropSize(unsigned dot, size_t ink) { return dot >> (2 * ink) & 3u; }

struct PageCanvas {
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<uint8_t> dots;  // width * height, line by line; none before Allocate
  std::array<DropCounts, kInks> drops{};

  // Makes room for the dots. A page is some megabytes, and many a page-start of a broken stream has
  // no row.
  void Allocate() { dots.resize(size_t{width} * height); }

  uint64_t Drops(size_t ink) const { return drops[ink][0] + drops[ink][1] + drops[ink][2]; }
};

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_PAGE_CANVAS_H_
