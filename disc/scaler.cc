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
      row_(across_.count() * kChannels),
      sums_(down_.MostAtOnce(), row_) {}

void Scaler::AddLine(std::span<const uint8_t> line) {
  if (lines_drawn_ == down_.count() || across_.count() == 0) return;
  if (across_.IsCopy() && down_.IsCopy()) {
    CopyLine(line);
  } else if (lines_added_ >= down_.First(lines_drawn_)) {
    ScaleAcross(line, row_);
    AddToSums(lines_added_, row_);
    DrawFinishedLines(lines_added_);
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

void Scaler::AddToSums(uint32_t source_line, const Row& row) {
  for (uint32_t i = lines_drawn_; i < down_.count() && down_.First(i) <= source_line; ++i) {
    const float weight = down_.Weights(i)[source_line - down_.First(i)];
    Row& sum = SumOf(i);
    for (size_t k = 0; k < sum.size(); ++k) sum[k] += weight * row[k];
  }
}

void Scaler::DrawFinishedLines(uint32_t source_line) {
  for (; lines_drawn_ < down_.count() && down_.Last(lines_drawn_) <= source_line; ++lines_drawn_) {
    Row& sum = SumOf(lines_drawn_);
    const std::span<uint8_t> out = canvas_.Line(down_.first_on_page() + lines_drawn_);
    const auto first = static_cast<ptrdiff_t>(across_.first_on_page() * kChannels);
    std::transform(sum.begin(), sum.end(), out.begin() + first, Byte);
    std::fill(sum.begin(), sum.end(), 0.0F);
  }
}

}  // namespace zr7700
