// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/test_color_difference.h"

#include <lcms2.h>

#include <memory>

namespace zr7700::reference_engine::testing {
namespace {

constexpr cmsCIEXYZ kD65 = {0.95047, 1, 1.08883};

cmsCIELab ToLcms(const Lab& lab) { return {lab[0], lab[1], lab[2]}; }

}  // namespace

double LinearOfSrgb(uint8_t value) {
  // Gamma, a, b, c, d of sRGB: ((a X + b) ^ gamma from d on, c X below it.
  constexpr double kParameters[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
  static const std::unique_ptr<cmsToneCurve, decltype(&cmsFreeToneCurve)> curve(
      cmsBuildParametricToneCurve(nullptr, 4, kParameters), cmsFreeToneCurve);
  return cmsEvalToneCurveFloat(curve.get(), static_cast<float>(value) / 255);
}

Lab LabOfLinear(const std::array<double, 3>& linear) {
  const auto [r, g, b] = linear;
  const cmsCIEXYZ color = {0.4124564 * r + 0.3575761 * g + 0.1804375 * b,
                           0.2126729 * r + 0.7151522 * g + 0.0721750 * b,
                           0.0193339 * r + 0.1191920 * g + 0.9503041 * b};
  cmsCIELab lab;
  cmsXYZ2Lab(&kD65, &lab, &color);
  return {lab.L, lab.a, lab.b};
}

double DeltaE2000(const Lab& a, const Lab& b) {
  const cmsCIELab first = ToLcms(a), second = ToLcms(b);
  return cmsCIE2000DeltaE(&first, &second, 1, 1, 1);
}

}  // namespace zr7700::reference_engine::testing
