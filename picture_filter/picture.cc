// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/picture.h"

#include <utility>

namespace zr7700 {
namespace {

constexpr uint32_t kMostAcross = 131072;
constexpr uint64_t kMostDots = 250'000'000;
constexpr uint64_t kMostHeld_bytes = uint64_t{512} << 20;

constexpr double kLeast_dpi = 1;
constexpr double kMost_dpi = 65535;

}  // namespace

bool IsDensity(double dpi) { return dpi >= kLeast_dpi && dpi <= kMost_dpi; }

Density DensityPerInch(double across, double down) {
  if (!IsDensity(across) || !IsDensity(down)) return {};
  return {.across = across, .down = down};
}

Density DensityOfShape(double across, double down) {
  if (!(across > 0) || !(down > 0)) return {};
  return DensityPerInch(kUsualDensity_dpi, kUsualDensity_dpi * down / across);
}

std::string CheckDots(Dots dots) {
  const uint64_t all = uint64_t{dots.width} * dots.height;
  if (all == 0) return "The picture has no dots; save it again in the program that it came from.";
  if (dots.width <= kMostAcross && dots.height <= kMostAcross && all <= kMostDots) return {};
  return "The picture says that it has " + std::to_string(dots.width) + " x " +
         std::to_string(dots.height) +
         " dots, which is more than 250 million or than 131072 on a side; make it smaller.";
}

std::string CheckHeldBytes(uint64_t bytes) {
  if (bytes <= kMostHeld_bytes) return {};
  return "The picture is stored so that all of it has to be held at once, and is too large for "
         "that; save it without interlacing (not progressive, TIFF in strips), or make it smaller.";
}

bool PictureReader::Refuse(std::string sentence) {
  error_ = std::move(sentence);
  return false;
}

bool PictureReader::RefuseDamaged(const char* what) {
  return Refuse(
      std::string("The picture is damaged, not all of it came, or it is of an unusual kind (") +
      what + "); see whether it opens in another program, and save it again there.");
}

}  // namespace zr7700
