// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/ink_model.h"

#include <algorithm>
#include <cmath>

namespace zr7700::reference_engine {
namespace {

constexpr InkSet kHeronInks = {
    {{0.0020, 0.985, 0.995}, {0.990, 0.0020, 0.985}, {0.995, 0.990, 0.0020}}};
constexpr InkSet kGraniteHighGlossInks = {
    {{0.0025, 0.980, 0.992}, {0.988, 0.0025, 0.982}, {0.994, 0.988, 0.0025}}};
constexpr InkSet kGraniteRimmedInks = {
    {{0.0012, 0.986, 0.996}, {0.992, 0.0012, 0.988}, {0.997, 0.992, 0.0012}}};

// The side absorptions of the inks are so small that each round gains more than one digit.
constexpr int kSeparationRounds = 24;

// WhitePolyester, SemiGloss and WhiteMatteBOPP: the discs with a raised rim. The others are
// HighGloss.
bool IsRimmed(uint32_t media) { return media >= 7 && media <= 9; }

// What all inks but `plane` let through in the channel that `plane` absorbs.
double OtherInks(const InkSet& inks, const Coverages& coverages, size_t plane) {
  double light = 1;
  for (size_t other = 0; other < kPlanes; ++other)
    if (other != plane) light *= 1 - coverages[other] * (1 - inks[other][plane]);
  return light;
}

}  // namespace

const InkSet& InksFor(Family family, uint32_t media) {
  if (family == Family::kHeron) return kHeronInks;
  return IsRimmed(media) ? kGraniteRimmedInks : kGraniteHighGlossInks;
}

std::array<double, kDropSizes> DropCoverages(Family family, uint32_t media) {
  if (family == Family::kHeron) return {0.38, 0.74, 1};
  if (IsRimmed(media)) return {0.30, 0.65, 1};
  if (media == 2) return {0.34, 0.70, 1};
  return {0.36, 0.72, 1};
}

LinearColor MixInks(const InkSet& inks, const Coverages& coverages) {
  LinearColor light = {1, 1, 1};
  for (size_t plane = 0; plane < kPlanes; ++plane)
    for (size_t channel = 0; channel < light.size(); ++channel)
      light[channel] *= 1 - coverages[plane] * (1 - inks[plane][channel]);
  return light;
}

Coverages SeparateInks(const InkSet& inks, const LinearColor& color) {
  Coverages coverages = {0, 0, 0};
  // Plane p absorbs mainly channel p, so each round solves every channel for its own ink.
  for (int round = 0; round < kSeparationRounds; ++round)
    for (size_t plane = 0; plane < kPlanes; ++plane) {
      const double wanted = color[plane] / OtherInks(inks, coverages, plane);
      coverages[plane] = std::clamp((1 - wanted) / (1 - inks[plane][plane]), 0.0, 1.0);
    }
  return coverages;
}

double DecodeSrgb(double encoded) {
  return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

double EncodeSrgb(double linear) {
  return linear <= 0.0031308 ? linear * 12.92 : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

double CoverageOfCode(double code) { return 1 - DecodeSrgb(1 - code / 255); }

double CodeOfCoverage(double coverage) { return 255 * (1 - EncodeSrgb(1 - coverage)); }

}  // namespace zr7700::reference_engine
