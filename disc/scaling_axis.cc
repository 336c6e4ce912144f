// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/scaling_axis.h"

#include <algorithm>
#include <cmath>

namespace zr7700 {
namespace {

// Catmull-Rom: goes through the source dots, and overshoots a little beside edges.
double Cubic(double distance) {
  const double x = std::abs(distance);
  if (x < 1) return 1 + x * x * (1.5 * x - 2.5);
  if (x < 2) return 2 + x * (x * (2.5 - 0.5 * x) - 4);
  return 0;
}

}  // namespace

ScalingAxis::ScalingAxis(uint32_t source, int64_t start, int64_t length, uint32_t page)
    : source_(source), is_copy_(length == source) {
  const int64_t first = std::max<int64_t>(start, 0);
  const int64_t end = std::min<int64_t>(start + length, page);
  if (first < end) first_on_page_ = static_cast<uint32_t>(first);
  const double step = static_cast<double>(source) / static_cast<double>(length);
  for (int64_t dot = first; dot < end; ++dot) {
    const auto i = static_cast<double>(dot - start);
    if (step >= 1) {
      AddAverage(i * step, (i + 1) * step);
    } else {
      AddInterpolation((i + 0.5) * step - 0.5);
    }
    Normalize();
  }
}

uint32_t ScalingAxis::MostAtOnce() const {
  uint32_t most = 1;
  uint32_t first = 0;  // of those that the source dot before comes into as well
  for (uint32_t i = 0; i < count(); ++i) {
    while (Last(first) < First(i)) ++first;
    most = std::max(most, i - first + 1);
  }
  return most;
}

// All that lies between two places, each source dot by its share.
void ScalingAxis::AddAverage(double from, double to) {
  constexpr double kRounding = 1e-6;
  const auto first = std::min(static_cast<uint32_t>(from + kRounding), source_ - 1);
  const auto end = std::clamp(static_cast<uint32_t>(std::ceil(to - kRounding)), first + 1, source_);
  Begin(first, end - first);
  for (uint32_t dot = first; dot < end; ++dot) {
    const double share = std::min<double>(to, dot + 1) - std::max<double>(from, dot);
    weights_.push_back(static_cast<float>(share));
  }
}

// Beyond the edges the source's first and last dots go on.
void ScalingAxis::AddInterpolation(double at) {
  const auto middle = static_cast<int64_t>(std::floor(at));
  const int64_t last = int64_t{source_} - 1;
  const int64_t first_tap = std::clamp<int64_t>(middle - 1, 0, last);
  const int64_t last_tap = std::clamp<int64_t>(middle + 2, 0, last);
  Begin(static_cast<uint32_t>(first_tap), static_cast<uint32_t>(last_tap - first_tap + 1));
  weights_.resize(weights_.size() + taps_.back().count);
  for (int64_t dot = middle - 1; dot <= middle + 2; ++dot) {
    const int64_t tap = std::clamp(dot, first_tap, last_tap) - first_tap;
    weights_[taps_.back().weights + static_cast<size_t>(tap)] +=
        static_cast<float>(Cubic(at - static_cast<double>(dot)));
  }
}

void ScalingAxis::Begin(uint32_t first, uint32_t count) {
  taps_.push_back({.first = first, .count = count, .weights = weights_.size()});
}

// Makes the newest dot's weights a whole.
void ScalingAxis::Normalize() {
  const std::span<float> weights = std::span(weights_).subspan(taps_.back().weights);
  float sum = 0;
  for (const float weight : weights) sum += weight;
  for (float& weight : weights) weight /= sum;
}

}  // namespace zr7700
