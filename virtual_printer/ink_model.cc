// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/ink_model.h"

#include <algorithm>
#include <cmath>

namespace zr7700::printer {
namespace {

// How much of its dot a drop of size 0 to 3 covers, and how much light of each colour full coverage
// by each ink lets through.
struct InkSet {
  std::array<double, kDropSizes + 1> coverage;
  std::array<Light, kInks> passed;
};

constexpr InkSet kHeron = {
    {0, 0.38, 0.74, 1}, {{{0.0020, 0.985, 0.995}, {0.990, 0.0020, 0.985}, {0.995, 0.990, 0.0020}}}};
constexpr InkSet kGranite1 = {
    {0, 0.36, 0.72, 1}, {{{0.0025, 0.980, 0.992}, {0.988, 0.0025, 0.982}, {0.994, 0.988, 0.0025}}}};
constexpr InkSet kGranite2 = {{0, 0.34, 0.70, 1}, kGranite1.passed};
constexpr InkSet kGraniteRimmed = {
    {0, 0.30, 0.65, 1}, {{{0.0012, 0.986, 0.996}, {0.992, 0.0012, 0.988}, {0.997, 0.992, 0.0012}}}};

const InkSet& FindInkSet(Family family, uint8_t media) {
  if (family == Family::kHeron) return kHeron;
  if (media == 2) return kGranite2;
  return media >= 7 ? kGraniteRimmed : kGranite1;
}

// Transparent inks lie on each other independently: what they let through multiplies.
Light DotLight(const InkSet& inks, unsigned dot) {
  Light light = {1, 1, 1};
  for (size_t ink = 0; ink < kInks; ++ink) {
    const double coverage = inks.coverage[DropSize(dot, ink)];
    for (size_t channel = 0; channel < light.size(); ++channel) {
      light[channel] *= 1 - coverage * (1 - inks.passed[ink][channel]);
    }
  }
  return light;
}

double EncodeSrgb(double light) {
  return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

}  // namespace

std::array<Light, kDotKinds> DotLights(Family family, uint8_t media) {
  std::array<Light, kDotKinds> lights;
  const InkSet& inks = FindInkSet(family, media);
  for (unsigned dot = 0; dot < kDotKinds; ++dot) lights[dot] = DotLight(inks, dot);
  return lights;
}

Rgb ToSrgb(const Light& light) {
  Rgb color;
  for (size_t i = 0; i < color.size(); ++i) {
    color[i] = static_cast<uint8_t>(std::lround(255 * EncodeSrgb(std::clamp(light[i], 0.0, 1.0))));
  }
  return color;
}

}  // namespace zr7700::printer
