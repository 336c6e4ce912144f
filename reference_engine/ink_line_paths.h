// The ways to look up inks, equal to the last bit; LookUpInks takes the best one for the processor.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_INK_LINE_PATHS_H_
#define ZR7700_REFERENCE_ENGINE_INK_LINE_PATHS_H_

#include "reference_engine/ink_line.h"

namespace zr7700::reference_engine {

// Odd factors, so that each 8 neighbours across or down hold all 8 dither values.
inline constexpr uint32_t kDitherPerColumn = 3;
inline constexpr uint32_t kDitherPerLine = 5;
inline constexpr uint32_t kDitherMask = (1U << kTableStepShift) - 1;

// The reference: plain C++ for every processor.
void LookUpInksPlain(const uint8_t* pixels, const CellRun& run, const InkNode* nodes,
                     uint8_t* const codes[kPlanes]);

// Whether LookUpInksAvx2 may be called here.
bool HasAvx2();

// Eight cells at a time. Does nothing on processors that cannot have it.
void LookUpInksAvx2(const uint8_t* pixels, const CellRun& run, const InkNode* nodes,
                    uint8_t* const codes[kPlanes]);

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_INK_LINE_PATHS_H_
