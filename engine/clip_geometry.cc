// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/clip_geometry.h"

#include <algorithm>

#include "base/log.h"
#include "disc/ring.h"

namespace zr7700 {
namespace {

// Twice the radius of a business card's rounded corners, in dots.
constexpr int kCornerDiameter = 142;

// The lengths that the outline is drawn from, in dots.
struct Ring {
  uint16_t width;
  uint16_t height;
  uint16_t outer_diameter;
  uint32_t inner_radius;
  uint16_t inner_diameter;
};

Ring RingOf(const JobVariables& variables) {
  Ring ring;
  ring.width = static_cast<uint16_t>(variables.rightOutputImage - variables.leftOutputImage);
  ring.height = static_cast<uint16_t>(variables.bottomOutputImage - variables.topOutputImage);
  ring.outer_diameter = std::max(ring.width, ring.height);
  ring.inner_radius = HoleRadiusDots(variables.InnerDiam);
  ring.inner_diameter = static_cast<uint16_t>(2 * ring.inner_radius);
  return ring;
}

// Writes one half of the entries at consecutive lines. The line counts in 16 bits and wraps; lines
// outside the table are dropped.
class HalfWidthWriter {
 public:
  HalfWidthWriter(std::span<ClipEntry> table, uint16_t ClipEntry::*half, uint16_t first_line)
      : table_(table), half_(half), line_(first_line) {}

  void Write(uint16_t half_width) {
    if (line_ < table_.size()) table_[line_].*half_ = half_width;
    ++line_;
  }

  uint16_t line() const { return line_; }

 private:
  std::span<ClipEntry> table_;
  uint16_t ClipEntry::*half_;
  uint16_t line_;
};

void WriteBusinessCard(const JobVariables& variables, const Ring& ring, HalfWidthWriter& outer) {
  LogMessage(kLogMilestone, "     ClipGetData: Clipping for OEM_FORM_BUSINESS_CD");
  for (int a = 0; a <= 140; a += 2) {
    const int b = kCornerDiameter - a;
    const int root = TruncatedRoot(kCornerDiameter * kCornerDiameter - b * b);
    outer.Write(static_cast<uint16_t>(ring.width / 2 - ((kCornerDiameter - root) >> 1)));
  }
  const auto image_width = static_cast<int32_t>(variables.imageWidth);
  const auto straight =
      static_cast<uint16_t>(static_cast<uint32_t>(image_width / 2) - variables.leftOutputImage);
  // A line number ends at 65535: a taller page's lines are far outside any table.
  const int32_t middle_line = std::min(static_cast<int32_t>(variables.imageHeight) / 2, 65534);
  while (outer.line() <= middle_line) outer.Write(straight);
}

void WriteRoundDisc(const JobVariables& variables, const Ring& ring, HalfWidthWriter& outer) {
  for (int a = ring.outer_diameter - 1; a > 0; a -= 2) {
    uint16_t half_width = OutlineHalfWidth(ring.outer_diameter, a / 2);
    if (variables.discForm == kCappedForm) {
      half_width = std::min(half_width, static_cast<uint16_t>(ring.width / 2));
    }
    outer.Write(half_width);
  }
}

void WriteOuter(const JobVariables& variables, const Ring& ring, std::span<ClipEntry> table) {
  const auto first_line = static_cast<uint16_t>(variables.OuterMargin);
  LogMessage(kLogMilestone, "     ClipGetData: setting initial wIndex to %i", first_line);
  HalfWidthWriter outer(table, &ClipEntry::outer, first_line);
  if (variables.discForm == OEM_FORM_BUSINESS_CD) {
    WriteBusinessCard(variables, ring, outer);
  } else {
    WriteRoundDisc(variables, ring, outer);
  }
}

void WriteInner(const JobVariables& variables, const Ring& ring, std::span<ClipEntry> table) {
  const auto lines_beside = static_cast<uint16_t>(variables.imageHeight - ring.inner_diameter);
  const auto first_line = static_cast<uint16_t>((lines_beside + 1) / 2);
  HalfWidthWriter inner(table, &ClipEntry::inner, first_line);
  const uint32_t diameter = ring.inner_diameter;
  for (uint32_t a = diameter; a > 0; a -= 2) {
    inner.Write(HoleHalfWidth(diameter, a));
  }
}

void MirrorUpperHalf(uint32_t image_height_lines, std::span<ClipEntry> table) {
  const auto half = static_cast<size_t>((uint64_t{image_height_lines} + 1) / 2);
  const size_t last = std::min(half, table.size());
  for (size_t e = 0; e < last; ++e) {
    const size_t mirrored = image_height_lines - 1 - e;
    if (mirrored < table.size()) table[mirrored] = table[e];
  }
}

bool Refuse() {
  LogMessage(kLogMilestone, "ClipGetData:  returning (FALSE)");
  return false;
}

}  // namespace

bool ClipGetData(const JobVariables& variables, std::span<ClipEntry> table) {
  std::fill(table.begin(), table.end(), ClipEntry{0, 0});
  const Ring ring = RingOf(variables);
  LogMessage(kLogDetail, "     ClipGetData: nID = %u (in 300dpi units))\n", ring.inner_radius);
  LogMessage(kLogMilestone, "     ClipGetData: wImageWidth = %u, wImageHeight = %u\n", ring.width,
             ring.height);
  if (ring.outer_diameter > variables.maxImageDots || ring.outer_diameter < ring.inner_diameter) {
    LogMessage(kLogClipping, "Invalid Dimension wOd: %u, Pline %u", ring.outer_diameter,
               variables.maxImageDots);
    return Refuse();
  }
  if (ring.outer_diameter == 0) return true;
  WriteOuter(variables, ring, table);
  WriteInner(variables, ring, table);
  MirrorUpperHalf(variables.imageHeight, table);
  return true;
}

}  // namespace zr7700
