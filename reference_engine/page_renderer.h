// Renders one page: raster lines in, passes out.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_PAGE_RENDERER_H_
#define ZR7700_REFERENCE_ENGINE_PAGE_RENDERER_H_

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "reference_engine/color_table.h"
#include "reference_engine/page_settings.h"
#include "reference_engine/screen.h"
#include "reference_engine/stream_writer.h"
#include "reference_engine/sweep.h"

namespace zr7700::reference_engine {

class PageRenderer {
 public:
  // `table`, `screen` (built for these settings) and `writer` must outlive the renderer.
  PageRenderer(const PageSettings& settings, const ColorTable& table, const Screen& screen,
               StreamWriter* writer);

  // Takes page line `line`, which must be higher than the ones before: whole pixels of 4 bytes, no
  // more than the printable width. A shorter line ends at the right edge. Lines left out are white.
  void TakeLine(uint32_t line, std::span<const uint8_t> pixels);

  // Renders and sends what is left.
  void Finish();

  const PageCounts& counts() const { return sweep_.counts(); }

 private:
  // A line with a white pixel before and after; [begin, end) holds all that is not white.
  struct Line {
    std::vector<uint8_t> bytes;
    uint32_t number = 0;
    uint32_t begin = 0;
    uint32_t end = 0;
    bool present = false;
    const uint8_t* pixel(uint32_t column) const;
  };
  // Ink codes and drop sizes of one phase, by plane.
  using PlaneBuffers = std::array<std::vector<uint8_t>, kPlanes>;

  void FillLine(std::span<const uint8_t> pixels, Line* line) const;
  void RenderCurrent(const Line* next);
  void RenderLine(uint32_t line, uint32_t begin, uint32_t end);
  void RenderPhase(Meeting meeting, uint32_t begin, uint32_t end);

  PageSettings settings_;
  const ColorTable& table_;
  const Screen& screen_;
  Sweep sweep_;
  // The line to be rendered next, and the one above it, which sharpening looks at.
  Line above_;
  Line current_;
  Line incoming_;
  Line white_;
  std::vector<uint8_t> sharp_;
  PlaneBuffers codes_;
  PlaneBuffers levels_;
};

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_PAGE_RENDERER_H_
