// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/picture_options.h"

#include <strings.h>

#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace zr7700 {
namespace {

constexpr double kMostPercent = 100'000;

// The first of the options that is given; null without one.
const char* ValueOf(std::initializer_list<const char*> names, int count, cups_option_t* options) {
  for (const char* const name : names) {
    const char* const value = cupsGetOption(name, count, options);
    if (value != nullptr) return value;
  }
  return nullptr;
}

// CUPS makes "true" of a bare name, and "false" of one with "no" before it.
std::optional<bool> Truth(const char* value) {
  if (value == nullptr) return std::nullopt;
  for (const char* const no : {"false", "no", "off"}) {
    if (strcasecmp(value, no) == 0) return false;
  }
  return true;
}

std::optional<double> Percent(const char* value) {
  if (value == nullptr) return std::nullopt;
  char* end = nullptr;
  const double percent = std::strtod(value, &end);
  const bool is_percent = *end == '\0' && percent > 0 && percent <= kMostPercent;
  return is_percent ? std::optional(percent) : std::nullopt;
}

// "300", or "150x300" for dots that are no squares.
std::optional<Density> DotsPerInch(const char* value) {
  if (value == nullptr) return std::nullopt;
  char* end = nullptr;
  const double across = std::strtod(value, &end);
  const double down = *end == 'x' ? std::strtod(end + 1, &end) : across;
  if (*end != '\0' || !IsDensity(across) || !IsDensity(down)) return std::nullopt;
  return Density{.across = across, .down = down};
}

// The numbers of orientation-requested are IPP's: 4 is turned left, 5 right, 6 upside down.
Turn PageTurn(int count, cups_option_t* options) {
  const char* const value = cupsGetOption("orientation-requested", count, options);
  const long orientation = value == nullptr ? 0 : std::strtol(value, nullptr, 10);
  if (orientation == 4) return {.quarters = 3};
  if (orientation == 5) return {.quarters = 1};
  if (orientation == 6) return {.quarters = 2};
  const bool landscape = Truth(cupsGetOption("landscape", count, options)).value_or(false);
  return {.quarters = landscape ? 3 : 0};
}

}  // namespace

PictureOptions ReadPictureOptions(int option_count, cups_option_t* options) {
  const auto value = [&](std::initializer_list<const char*> names) {
    return ValueOf(names, option_count, options);
  };
  const Turn mirror = {.mirrored = Truth(value({"mirror"})).value_or(false)};
  return {.scaling = ScalingOf(option_count, options),
          .density = DotsPerInch(value({"ppi"})),
          .percent_of_fit = Percent(value({"scaling"})),
          .fit = Truth(value({"fitplot", "fit-to-page"})),
          .percent_natural = Percent(value({"natural-scaling"})),
          .position = PositionOf(option_count, options),
          .turn = Then(PageTurn(option_count, options), mirror)};
}

double ScaleOf(const PictureOptions& options, Size natural, Size page) {
  const double fit = ScaleFor(Scaling::kFit, natural, page);
  const double percent_natural = options.percent_natural.value_or(100) / 100;
  if (options.scaling == Scaling::kFit) return options.density ? 1 : fit;
  if (options.scaling != Scaling::kUnset) return ScaleFor(options.scaling, natural, page);
  if (options.density) return percent_natural;
  if (options.percent_of_fit) return fit * *options.percent_of_fit / 100;
  if (options.fit) return *options.fit ? fit : percent_natural;
  return options.percent_natural ? percent_natural : fit;
}

}  // namespace zr7700
