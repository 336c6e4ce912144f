// How different two colours look, for the tests.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_TESTING_COLOR_DIFFERENCE_H_
#define ZR7700_REFERENCE_ENGINE_TESTING_COLOR_DIFFERENCE_H_

#include <array>

namespace zr7700::reference_engine::testing {

// L*, a*, b* under D65.
using Lab = std::array<double, 3>;

// Of sRGB in linear light, each channel 0 to 1.
Lab LabOfLinear(const std::array<double, 3>& linear);

// CIEDE2000 with unit weights.
double DeltaE2000(const Lab& a, const Lab& b);

}  // namespace zr7700::reference_engine::testing

#endif  // ZR7700_REFERENCE_ENGINE_TESTING_COLOR_DIFFERENCE_H_
