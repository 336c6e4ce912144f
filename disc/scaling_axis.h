// One dimension of a scaling: from which source dots each target dot on the page comes.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DISC_SCALING_AXIS_H_
#define ZR7700_DISC_SCALING_AXIS_H_

#include <cstdint>
#include <span>
#include <vector>

namespace zr7700 {

class ScalingAxis {
 public:
  // `source` dots become `length` dots (both >= 1), the first of which is dot `start` of a page of
  // `page` dots. Only those on the page are kept.
  ScalingAxis(uint32_t source, int64_t start, int64_t length, uint32_t page);

  // Every dot is one source dot.
  bool IsCopy() const { return is_copy_; }

  // How many dots lie on the page, and the page's dot that is the first of them.
  uint32_t count() const { return static_cast<uint32_t>(taps_.size()); }
  uint32_t first_on_page() const { return first_on_page_; }

  // Of dot `i` < count(): the first source dot that it comes from, the last, and the weights of all
  // between. Their sum is 1.
  uint32_t First(uint32_t i) const { return taps_[i].first; }
  uint32_t Last(uint32_t i) const { return taps_[i].first + taps_[i].count - 1; }
  std::span<const float> Weights(uint32_t i) const {
    return std::span(weights_).subspan(taps_[i].weights, taps_[i].count);
  }

  // The most dots that come from one source dot.
  uint32_t MostAtOnce() const;

 private:
  struct Taps {
    uint32_t first;
    uint32_t count;
    size_t weights;  // index of the first
  };

  void AddAverage(double from, double to);
  void AddInterpolation(double at);
  void Begin(uint32_t first, uint32_t count);
  void Normalize();

  uint32_t source_;
  bool is_copy_;
  uint32_t first_on_page_ = 0;
  std::vector<Taps> taps_;
  std::vector<float> weights_;
};

}  // namespace zr7700

#endif  // ZR7700_DISC_SCALING_AXIS_H_
