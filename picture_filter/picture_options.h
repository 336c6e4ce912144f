// What a job's options say of how a picture is laid on the page.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_PICTURE_OPTIONS_H_
#define ZR7700_PICTURE_FILTER_PICTURE_OPTIONS_H_

#include <cups/cups.h>

#include <optional>

#include "disc/placement.h"
#include "picture_filter/picture.h"
#include "picture_filter/turn.h"

namespace zr7700 {

struct PictureOptions {
  Scaling scaling = Scaling::kUnset;      // print-scaling
  std::optional<Density> density;         // ppi: taken instead of the picture's own
  std::optional<double> percent_of_fit;   // scaling
  std::optional<bool> fit;                // fitplot, fit-to-page
  std::optional<double> percent_natural;  // natural-scaling
  Position position;
  Turn turn;  // orientation-requested or landscape, and then mirror
};

// A value that an option does not have counts as the option not given. Any thread.
PictureOptions ReadPictureOptions(int option_count, cups_option_t* options);

// How much larger than its natural size the picture becomes: both sizes upright, in the same unit,
// above 0. Any thread.
double ScaleOf(const PictureOptions& options, Size natural, Size page);

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_PICTURE_OPTIONS_H_
