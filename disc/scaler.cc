// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/scaler.h"

#include <algorithm>

namespace zr7700 {
namespace {

constexpr size_t kChannels = 3;

uint8_t Byte(float value) { return static_cast<uint8_t>(std::clamp(value + 0.5F, 0.0F, 255.0F)); }

}  // namespace

Scaler::Scaler(uint32_t source_width, uint32_t source_height, const Place& place, Canvas& canvas)
    : across_(source_width, place.left, place.width, canvas.width()),
      down_(source_height, place.top, place.height, canvas.height()),
      canvas_(canvas),
      rows_(down_.MostTaps(), Row(across_.count() * kChannels)),
      sum_(across_.count() * kChannels) {}

void Scaler::AddLine(std::span<const uint8_t> line) {
  if (lines_drawn_ == down_.count() || across_.count() == 0) return;
  if (across_.IsCopy() && down_.IsCopy()) {
    CopyLine(line);
  } else if (lines_added_ >= down_.First(lines_drawn_)) {
    ScaleAcross(line, RowOf(lines_added_));
    DrawFinishedLines();
  }
  ++lines_added_;
}

void Scaler::CopyLine(std::span<const uint8_t> line) {
  if (lines_added_ != down_.First(lines_drawn_)) return;
  const std::span<uint8_t> out = canvas_.Line(down_.first_on_page() + lines_drawn_);
  std::copy_n(line.subspan(size_t{across_.First(0)} * kChannels).begin(),
              across_.count() * kChannels,
              out.subspan(size_t{across_.first_on_page()} * kChannels).begin());
  ++lines_drawn_;
}

void Scaler::ScaleAcross(std::span<const uint8_t> line, Row& row) const {
  for (uint32_t i = 0; i < across_.count(); ++i) {
    const uint8_t* from = line.data() + across_.First(i) * kChannels;
    float red = 0;
    float green = 0;
    float blue = 0;
    for (const float weight : across_.Weights(i)) {
      red += weight * from[0];
      green += weight * from[1];
      blue += weight * from[2];
      from += kChannels;
    }
    float* const to = row.data() + i * kChannels;
    to[0] = red;
    to[1] = green;
    to[2] = blue;
  }
}

void Scaler::DrawFinishedLines() {
  while (lines_drawn_ < down_.count() && down_.Last(lines_drawn_) <= lines_added_) {
    DrawLine(lines_drawn_++);
  }
}

void Scaler::DrawLine(uint32_t i) {
  std::fill(sum_.begin(), sum_.end(), 0.0F);
  uint32_t source_line = down_.First(i);
  for (const float weight : down_.Weights(i)) {
    const Row& row = RowOf(source_line++);
    for (size_t k = 0; k < sum_.size(); ++k) sum_[k] += weight * row[k];
  }
  const std::span<uint8_t> out = canvas_.Line(down_.first_on_page() + i);
  std::transform(sum_.begin(), sum_.end(),
                 out.subspan(size_t{across_.first_on_page()} * kChannels).begin(), Byte);
}

}  // namespace zr7700
