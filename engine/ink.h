// The job's ink rules for one pixel, and their tabulated form.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_INK_H_
#define ZR7700_ENGINE_INK_H_

#include <array>
#include <cstdint>
#include <vector>

#include "engine/job_variables.h"

namespace zr7700 {

// How a job changes its inks: a plain copy of what the job variables say.
struct InkRules {
  uint8_t saturation_percent;
  bool limit_on;      // the total of the three inks is held to `limit`
  int32_t limit;      // in ink units, 255 being one full ink
  int32_t run_value;  // an ink loses excess x run_value x ink / run_div
  int32_t run_div;    // 0: nothing is taken off
  bool operator==(const InkRules&) const = default;

  // True when no pixel can change.
  bool ChangesNothing() const { return saturation_percent == kUnchanged && !limit_on; }
  static constexpr uint8_t kUnchanged = 100;
};

InkRules InkRulesOf(const JobVariables& variables);

// One ink (0 to 255) after saturation: a wrap beyond 255 is kept. Any thread.
uint8_t SaturatedInk(const InkRules& rules, uint8_t ink);

// One ink after `excess` (above 0) has been taken off by the ink limit; the product wraps modulo
// 2^32, the result modulo 256. Any thread.
uint8_t LimitedInk(const InkRules& rules, int32_t excess, uint8_t ink);

// Changes red, green and blue, the 3 bytes at `pixel`, as the rules say: the plain form, one pixel
// at a time, that every faster one is measured against. Any thread.
void ApplyInkRules(const InkRules& rules, uint8_t* pixel);

// The rules as tables, for whole spans of pixels. Equal to ApplyInkRules on every pixel.
class InkTables {
 public:
  // Builds the tables; about a millisecond with an ink limit of 255.
  explicit InkTables(const InkRules& rules);

  const InkRules& rules() const { return rules_; }

  // Changes `pixel_count` pixels of 4 bytes (red, green, blue, pad) at `pixels` and clears the pad
  // bytes.
  void Apply(uint8_t* pixels, uint32_t pixel_count) const;

 private:
  bool HasTabledLimit() const;
  void ApplySaturation(uint8_t* pixels, uint32_t pixel_count) const;
  void ApplyLimit(uint8_t* pixels, uint32_t pixel_count) const;

  InkRules rules_;
  // From a colour byte to its ink after saturation.
  std::array<uint8_t, 256> ink_of_color_;
  // Row `excess`, column ink: the colour byte after the limit. Row 0 is the plain complement.
  std::vector<std::array<uint8_t, 256>> color_of_ink_;
};

}  // namespace zr7700

#endif  // ZR7700_ENGINE_INK_H_
