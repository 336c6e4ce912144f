// The threshold masks of the halftone, one a plane, made at build time by make_blue_noise.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_BLUE_NOISE_H_
#define ZR7700_REFERENCE_ENGINE_BLUE_NOISE_H_

#include <cstdint>

#include "reference_engine/family.h"

namespace zr7700::reference_engine {

inline constexpr int kMaskSide = 128;
inline constexpr int kMaskCells = kMaskSide * kMaskSide;

// Each mask holds every rank 0 .. kMaskCells - 1 once, line by line.
extern const uint16_t kBlueNoise[kPlanes][kMaskCells];

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_BLUE_NOISE_H_
