// The reference ink model: what drops look like. The colour tables and the halftone are made from
// it, and docs/printer-stream.md publishes it for everybody who draws a stream.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_INK_MODEL_H_
#define ZR7700_REFERENCE_ENGINE_INK_MODEL_H_

#include <array>
#include <cstdint>

#include "reference_engine/family.h"

namespace zr7700::reference_engine {

// Red, green and blue in linear light, 0 to 1.
using LinearColor = std::array<double, 3>;

// Share of a surface, 0 to 1, that each ink covers, by Plane.
using Coverages = std::array<double, kPlanes>;

// What each ink lets through at full coverage, by Plane.
using InkSet = std::array<LinearColor, kPlanes>;

// The ink set that prints on `media` (an engine media code; unknown codes count as 1, HighGloss).
const InkSet& InksFor(Family family, uint32_t media);

// Share of its grid square that a drop of size 1, 2, 3 covers on `media`.
std::array<double, kDropSizes> DropCoverages(Family family, uint32_t media);

// The mean linear light of a surface with independently placed inks.
LinearColor MixInks(const InkSet& inks, const Coverages& coverages);

// The coverages, each 0 to 1, that come closest to `color` by MixInks. White gives exact zeros.
Coverages SeparateInks(const InkSet& inks, const LinearColor& color);

// The sRGB curve: an encoded value of 0 to 1 to linear light and back.
double DecodeSrgb(double encoded);
double EncodeSrgb(double linear);

// Inks travel through colour table and halftone as codes, spaced evenly for the eye: the coverage
// that stands for `code` / 255, where 0 is no ink and 1 is full coverage, and back.
double CoverageOfCode(double code);
double CodeOfCoverage(double coverage);

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_INK_MODEL_H_
