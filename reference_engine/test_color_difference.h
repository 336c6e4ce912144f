// How different two colours look, for the tests: lcms2's formulas, none of the engine's.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_TEST_COLOR_DIFFERENCE_H_
#define ZR7700_REFERENCE_ENGINE_TEST_COLOR_DIFFERENCE_H_

#include <array>
#include <cstdint>

namespace zr7700::reference_engine::testing {

// An sRGB channel, 0 to 255, in linear light, 0 to 1.
double LinearOfSrgb(uint8_t value);

// L*, a*, b* under D65.
using Lab = std::array<double, 3>;

// Of sRGB in linear light, each channel 0 to 1.
Lab LabOfLinear(const std::array<double, 3>& linear);

// CIEDE2000 with unit weights.
double DeltaE2000(const Lab& a, const Lab& b);

}  // namespace zr7700::reference_engine::testing

#endif  // ZR7700_REFERENCE_ENGINE_TEST_COLOR_DIFFERENCE_H_
