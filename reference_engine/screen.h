// The halftone: ink codes to drops of three sizes by comparing them with blue-noise thresholds.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_SCREEN_H_
#define ZR7700_REFERENCE_ENGINE_SCREEN_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "reference_engine/blue_noise.h"
#include "reference_engine/family.h"

namespace zr7700::reference_engine {

// How drop sizes take over from each other as an area grows darker: standard mixes no more than two
// neighbouring sizes, photo lets them overlap, which hides where one size ends.
enum class DropMixing : uint8_t { kStandard = 1, kPhoto = 2 };

struct ScreenSettings {
  Family family = Family::kGranite;
  uint32_t media = 1;
  DropMixing mixing = DropMixing::kStandard;
  uint32_t passes = 1;
  bool operator==(const ScreenSettings&) const = default;
};

// The thresholds of one line, phase and plane: an ink code above sizes[s][i] calls for at least
// drop size s + 1 in every cell whose number is i modulo kMaskSide.
struct ThresholdRow {
  uint8_t sizes[kDropSizes][kMaskSide];
};

class Screen {
 public:
  // Computes the thresholds so that the drops of `settings.media` cover on average what the ink
  // codes stand for. Does nothing when they are there already. Throws std::bad_alloc and keeps what
  // it held when there is no memory.
  void Build(const ScreenSettings& settings);

  // The thresholds for the cells of page line `line` that are printed with column phase `phase`:
  // cell i is column phase + i x passes. Valid until the next Build.
  const ThresholdRow& Row(uint32_t line, uint32_t phase, Plane plane) const {
    return rows_[((line % kMaskSide) * settings_.passes + phase) * kPlanes + plane];
  }

 private:
  ScreenSettings settings_;
  std::vector<ThresholdRow> rows_;
};

// Sets levels[i] to the drop size, 0 to 3, for ink code codes[i], for each of `cells` cells; cell 0
// uses threshold 0. Plain arithmetic that compilers turn into vectors.
void ScreenCells(const uint8_t* codes, const ThresholdRow& thresholds, size_t cells,
                 uint8_t* levels);

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_SCREEN_H_
