// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/line_conversion.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "engine/clip_range.h"
#include "engine/ink.h"

namespace zr7700 {
namespace {

constexpr int kPixelBytes = 4;

// Pixel indices from the line's start, `end` not included; empty when end <= begin.
struct Span {
  int begin;
  int end;
};

uint8_t* PixelAt(uint8_t* line, int index) { return line + ptrdiff_t{index} * kPixelBytes; }

void Whiten(uint8_t* line, Span span) {
  constexpr uint8_t kClipped[kPixelBytes] = {0xFF, 0xFF, 0xFF, 0};
  for (int i = span.begin; i < span.end; ++i) memcpy(PixelAt(line, i), kClipped, kPixelBytes);
}

void Convert(const InkTables& tables, uint8_t* line, Span span) {
  if (span.begin >= span.end) return;
  tables.Apply(PixelAt(line, span.begin), static_cast<uint32_t>(span.end - span.begin));
}

// The tables of the job's ink rules, built anew only when the rules change.
const InkTables& TablesFor(const InkRules& rules) {
  static std::optional<InkTables> tables;
  if (!tables || tables->rules() != rules) tables.emplace(rules);
  return *tables;
}

// The clipped pixels as spans: a pixel counted n stands at index width - n.
void ConvertClipped(const InkTables& tables, const ClipRange& range, uint8_t* line, int width) {
  const int disc_begin = std::clamp(width - range.outer_high, 0, width);
  const int disc_end = std::clamp(width - range.outer_low + 1, disc_begin, width);
  const int hole_begin = std::clamp(width - range.inner_high + 1, disc_begin, disc_end);
  const int hole_end = std::clamp(width - range.inner_low, hole_begin, disc_end);
  Whiten(line, {0, disc_begin});
  Convert(tables, line, {disc_begin, hole_begin});
  Whiten(line, {hole_begin, hole_end});
  Convert(tables, line, {hole_end, disc_end});
  Whiten(line, {disc_end, width});
}

}  // namespace

bool ConvertLine(const JobVariables& variables, uint8_t* line, uint16_t width_pixels, uint16_t y) {
  if (!IsInPrintableBand(variables, y)) return false;
  const InkTables& tables = TablesFor(InkRulesOf(variables));
  ClipRange range;
  if (GetClipRange(variables, y, width_pixels, range)) {
    ConvertClipped(tables, range, line, width_pixels);
  } else {
    Convert(tables, line, {0, width_pixels});
  }
  return true;
}

}  // namespace zr7700
