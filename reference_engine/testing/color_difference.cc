// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/testing/color_difference.h"

#include <cmath>
#include <numbers>

namespace zr7700::reference_engine::testing {
namespace {

constexpr double kDegree = std::numbers::pi / 180;

double LabCurve(double t) {
  return t > 216.0 / 24389 ? std::cbrt(t) : (24389.0 / 27 * t + 16) / 116;
}

double Pow7(double value) { return std::pow(value, 7); }

// Hue angle in degrees, 0 to 360.
double Hue(double a, double b) {
  if (a == 0 && b == 0) return 0;
  const double hue = std::atan2(b, a) / kDegree;
  return hue < 0 ? hue + 360 : hue;
}

// Chroma, hue after the stretch of a*.
struct Polar {
  double chroma;
  double hue;
};
Polar ToPolar(const Lab& color, double stretch) {
  const double a = color[1] * (1 + stretch);
  return {std::hypot(a, color[2]), Hue(a, color[2])};
}

double HueDifference(const Polar& p, const Polar& q) {
  if (p.chroma * q.chroma == 0) return 0;
  const double difference = q.hue - p.hue;
  return difference > 180 ? difference - 360 : difference < -180 ? difference + 360 : difference;
}

double MeanHue(const Polar& p, const Polar& q) {
  const double sum = p.hue + q.hue;
  if (p.chroma * q.chroma == 0) return sum;
  if (std::abs(p.hue - q.hue) <= 180) return sum / 2;
  return sum < 360 ? (sum + 360) / 2 : (sum - 360) / 2;
}

double HueWeight(double hue) {
  return 1 - 0.17 * std::cos((hue - 30) * kDegree) + 0.24 * std::cos(2 * hue * kDegree) +
         0.32 * std::cos((3 * hue + 6) * kDegree) - 0.20 * std::cos((4 * hue - 63) * kDegree);
}

double LightnessScale(double lightness) {
  const double square = (lightness - 50) * (lightness - 50);
  return 1 + 0.015 * square / std::sqrt(20 + square);
}

double Rotation(double chroma, double hue) {
  const double angle = 30 * std::exp(-std::pow((hue - 275) / 25, 2));
  const double weight = 2 * std::sqrt(Pow7(chroma) / (Pow7(chroma) + Pow7(25)));
  return -std::sin(2 * angle * kDegree) * weight;
}

}  // namespace

Lab LabOfLinear(const std::array<double, 3>& linear) {
  const auto [r, g, b] = linear;
  const double x = LabCurve((0.4124564 * r + 0.3575761 * g + 0.1804375 * b) / 0.95047);
  const double y = LabCurve(0.2126729 * r + 0.7151522 * g + 0.0721750 * b);
  const double z = LabCurve((0.0193339 * r + 0.1191920 * g + 0.9503041 * b) / 1.08883);
  return {116 * y - 16, 500 * (x - y), 200 * (y - z)};
}

double DeltaE2000(const Lab& a, const Lab& b) {
  const double mean_chroma = (std::hypot(a[1], a[2]) + std::hypot(b[1], b[2])) / 2;
  const double ratio = Pow7(mean_chroma) / (Pow7(mean_chroma) + Pow7(25));
  const double stretch = 0.5 * (1 - std::sqrt(ratio));
  const Polar p = ToPolar(a, stretch);
  const Polar q = ToPolar(b, stretch);
  const double chroma = (p.chroma + q.chroma) / 2;
  const double hue = MeanHue(p, q);
  const double sine = std::sin(HueDifference(p, q) / 2 * kDegree);
  const double hue_step = 2 * std::sqrt(p.chroma * q.chroma) * sine;

  const double dl = (b[0] - a[0]) / LightnessScale((a[0] + b[0]) / 2);
  const double dc = (q.chroma - p.chroma) / (1 + 0.045 * chroma);
  const double dh = hue_step / (1 + 0.015 * chroma * HueWeight(hue));
  return std::sqrt(dl * dl + dc * dc + dh * dh + Rotation(chroma, hue) * dc * dh);
}

}  // namespace zr7700::reference_engine::testing
