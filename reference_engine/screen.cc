// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/screen.h"

#include <algorithm>
#include <array>
#include <utility>

#include "reference_engine/ink_model.h"

namespace zr7700::reference_engine {
namespace {

// Where along the way from bare to full, 0 to 1, a drop size begins and has reached every cell.
struct SizeSpan {
  double begin;
  double end;
};
using SizeSpans = std::array<SizeSpan, kDropSizes>;

constexpr SizeSpans kStandardSpans = {{{0, 1.0 / 3}, {1.0 / 3, 2.0 / 3}, {2.0 / 3, 1}}};
constexpr SizeSpans kPhotoSpans = {{{0, 0.40}, {0.25, 0.75}, {0.55, 1}}};

double ShareOfCells(const SizeSpan& span, double way) {
  return std::clamp((way - span.begin) / (span.end - span.begin), 0.0, 1.0);
}

// The mean coverage at one point of the way.
double CoverageAt(const SizeSpans& spans, const std::array<double, kDropSizes>& drops, double way) {
  double coverage = 0;
  double smaller = 0;
  for (size_t size = 0; size < drops.size(); ++size) {
    coverage += ShareOfCells(spans[size], way) * (drops[size] - smaller);
    smaller = drops[size];
  }
  return coverage;
}

using Thresholds = std::vector<uint8_t>;

// The highest ink code that stays below the drop size for each rank.
Thresholds ThresholdsByRank(const SizeSpans& spans, const std::array<double, kDropSizes>& drops,
                            size_t size) {
  std::array<double, 256> code_coverages;
  for (size_t code = 0; code < code_coverages.size(); ++code)
    code_coverages[code] = CoverageOfCode(static_cast<double>(code));
  Thresholds thresholds(kMaskCells);
  size_t code = 0;
  for (size_t rank = 0; rank < thresholds.size(); ++rank) {
    const double share = (static_cast<double>(rank) + 0.5) / kMaskCells;
    const double way = spans[size].begin + share * (spans[size].end - spans[size].begin);
    const double coverage = CoverageAt(spans, drops, way);
    while (code < 254 && code_coverages[code + 1] <= coverage) ++code;
    thresholds[rank] = static_cast<uint8_t>(code);
  }
  return thresholds;
}

void FillRow(const uint16_t* ranks, const std::array<Thresholds, kDropSizes>& thresholds,
             uint32_t phase, uint32_t passes, ThresholdRow* row) {
  for (size_t size = 0; size < kDropSizes; ++size)
    for (uint32_t cell = 0; cell < kMaskSide; ++cell)
      row->sizes[size][cell] = thresholds[size][ranks[(phase + cell * passes) % kMaskSide]];
}

}  // namespace

void Screen::Build(const ScreenSettings& settings) {
  if (!rows_.empty() && settings == settings_) return;
  const SizeSpans& spans = settings.mixing == DropMixing::kPhoto ? kPhotoSpans : kStandardSpans;
  const auto drops = DropCoverages(settings.family, settings.media);
  std::array<Thresholds, kDropSizes> thresholds;
  for (size_t size = 0; size < thresholds.size(); ++size)
    thresholds[size] = ThresholdsByRank(spans, drops, size);

  std::vector<ThresholdRow> rows(size_t{kMaskSide} * settings.passes * kPlanes);
  ThresholdRow* row = rows.data();
  for (uint32_t line = 0; line < kMaskSide; ++line)
    for (uint32_t phase = 0; phase < settings.passes; ++phase)
      for (const auto& mask : kBlueNoise)
        FillRow(mask + size_t{line} * kMaskSide, thresholds, phase, settings.passes, row++);
  // Last and together: after a lack of memory above, rows and settings still belong together.
  rows_ = std::move(rows);
  settings_ = settings;
}

void ScreenCells(const uint8_t* codes, const ThresholdRow& thresholds, size_t cells,
                 uint8_t* levels) {
  for (size_t begin = 0; begin < cells; begin += kMaskSide) {
    const size_t count = std::min<size_t>(kMaskSide, cells - begin);
    for (size_t i = 0; i < count; ++i) {
      const uint8_t code = codes[begin + i];
      levels[begin + i] =
          static_cast<uint8_t>((code > thresholds.sizes[0][i]) + (code > thresholds.sizes[1][i]) +
                               (code > thresholds.sizes[2][i]));
    }
  }
}

}  // namespace zr7700::reference_engine
