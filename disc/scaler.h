// Draws lines of a picture, one after another, into a place on the page, larger or smaller.
//
// What becomes smaller is averaged by area, what becomes larger is interpolated with a cubic
// (Catmull-Rom), what keeps its size is copied.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DISC_SCALER_H_
#define ZR7700_DISC_SCALER_H_

#include <cstdint>
#include <span>
#include <vector>

#include "disc/canvas.h"
#include "disc/scaling_axis.h"

namespace zr7700 {

// Not for use by two threads at once. The canvas must outlive it.
class Scaler {
 public:
  // A picture of source_width x source_height dots (each >= 1) goes to `place`, of which every
  // dimension is >= 1.
  Scaler(uint32_t source_width, uint32_t source_height, const Place& place, Canvas& canvas);

  // The next line from the top: source_width dots of three bytes. Lines beyond source_height are
  // passed over. The canvas holds the whole picture once all lines have been added.
  void AddLine(std::span<const uint8_t> line);

 private:
  using Row = std::vector<float>;

  void CopyLine(std::span<const uint8_t> line);
  void ScaleAcross(std::span<const uint8_t> line, Row& row) const;
  void AddToSums(uint32_t source_line, const Row& row);
  void DrawFinishedLines(uint32_t source_line);
  Row& SumOf(uint32_t i) { return sums_[i % sums_.size()]; }

  ScalingAxis across_;
  ScalingAxis down_;
  Canvas& canvas_;
  uint32_t lines_added_ = 0;
  uint32_t lines_drawn_ = 0;
  Row row_;                // the newest source line, scaled across
  std::vector<Row> sums_;  // of the target lines that it is a part of
};

}  // namespace zr7700

#endif  // ZR7700_DISC_SCALER_H_
