// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/ink.h"

#include <algorithm>

#include "base/wrapping.h"

namespace zr7700 {
namespace {

constexpr uint8_t kBestForPhotos = 2;
constexpr int32_t kOneFullInk = 255;
constexpr int32_t kThreeFullInks = 765;
constexpr uint32_t kPixelBytes = 4;

uint8_t Complement(uint8_t value) { return static_cast<uint8_t>(~value); }

}  // namespace

InkRules InkRulesOf(const JobVariables& variables) {
  const bool photos = variables.ColorMatching == kBestForPhotos;
  return {.saturation_percent = variables.InkSaturation,
          .limit_on = photos || IsHighQualityMedium(variables),
          .limit = photos ? static_cast<int32_t>(variables.nPhotoThreshold) : kOneFullInk,
          .run_value = static_cast<int32_t>(variables.nRunCompValue),
          .run_div = static_cast<int32_t>(variables.nRunCompDiv)};
}

uint8_t SaturatedInk(const InkRules& rules, uint8_t ink) {
  if (rules.saturation_percent == InkRules::kUnchanged) return ink;
  return static_cast<uint8_t>((ink * (rules.saturation_percent + 28U)) >> 7);
}

uint8_t LimitedInk(const InkRules& rules, int32_t excess, uint8_t ink) {
  if (rules.run_div == 0) return ink;
  const int32_t product = WrappingMultiply(WrappingMultiply(excess, rules.run_value), ink);
  return static_cast<uint8_t>(WrappingSubtract(ink, WrappingDivide(product, rules.run_div)));
}

void ApplyInkRules(const InkRules& rules, uint8_t* pixel) {
  uint8_t ink[3];
  for (int i = 0; i < 3; ++i) ink[i] = SaturatedInk(rules, Complement(pixel[i]));
  const int32_t excess = WrappingSubtract(ink[0] + ink[1] + ink[2], rules.limit);
  if (rules.limit_on && excess > 0) {
    for (uint8_t& value : ink) value = LimitedInk(rules, excess, value);
  }
  for (int i = 0; i < 3; ++i) pixel[i] = Complement(ink[i]);
}

InkTables::InkTables(const InkRules& rules) : rules_(rules) {
  for (unsigned color = 0; color < 256; ++color) {
    ink_of_color_[color] = SaturatedInk(rules, Complement(static_cast<uint8_t>(color)));
  }
  if (!HasTabledLimit()) return;
  color_of_ink_.resize(static_cast<size_t>(kThreeFullInks - rules.limit) + 1);
  for (size_t excess = 0; excess < color_of_ink_.size(); ++excess) {
    for (unsigned ink = 0; ink < 256; ++ink) {
      const auto value = static_cast<uint8_t>(ink);
      const uint8_t limited =
          excess == 0 ? value : LimitedInk(rules, static_cast<int32_t>(excess), value);
      color_of_ink_[excess][ink] = Complement(limited);
    }
  }
}

bool InkTables::HasTabledLimit() const {
  return rules_.limit_on && rules_.limit >= 0 && rules_.limit < kThreeFullInks;
}

void InkTables::ApplySaturation(uint8_t* pixels, uint32_t pixel_count) const {
  std::array<uint8_t, 256> color;
  for (unsigned i = 0; i < 256; ++i) color[i] = Complement(ink_of_color_[i]);
  for (uint8_t* pixel = pixels; pixel_count > 0; --pixel_count, pixel += kPixelBytes) {
    for (int i = 0; i < 3; ++i) pixel[i] = color[pixel[i]];
    pixel[3] = 0;
  }
}

void InkTables::ApplyLimit(uint8_t* pixels, uint32_t pixel_count) const {
  for (uint8_t* pixel = pixels; pixel_count > 0; --pixel_count, pixel += kPixelBytes) {
    const uint8_t cyan = ink_of_color_[pixel[0]];
    const uint8_t magenta = ink_of_color_[pixel[1]];
    const uint8_t yellow = ink_of_color_[pixel[2]];
    const int32_t excess = std::max(cyan + magenta + yellow - rules_.limit, 0);
    const auto& color_of_ink = color_of_ink_[static_cast<size_t>(excess)];
    pixel[0] = color_of_ink[cyan];
    pixel[1] = color_of_ink[magenta];
    pixel[2] = color_of_ink[yellow];
    pixel[3] = 0;
  }
}

void InkTables::Apply(uint8_t* pixels, uint32_t pixel_count) const {
  if (rules_.ChangesNothing()) {
    for (uint32_t i = 0; i < pixel_count; ++i) pixels[size_t{i} * kPixelBytes + 3] = 0;
  } else if (!rules_.limit_on) {
    ApplySaturation(pixels, pixel_count);
  } else if (HasTabledLimit()) {
    ApplyLimit(pixels, pixel_count);
  } else {
    for (uint8_t* pixel = pixels; pixel_count > 0; --pixel_count, pixel += kPixelBytes) {
      ApplyInkRules(rules_, pixel);
      pixel[3] = 0;
    }
  }
}

}  // namespace zr7700
