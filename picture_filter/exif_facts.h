// What Exif data say of a picture that matters for printing it.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_EXIF_FACTS_H_
#define ZR7700_PICTURE_FILTER_EXIF_FACTS_H_

#include <cstdint>
#include <optional>
#include <span>

#include "picture_filter/picture.h"

namespace zr7700 {

struct ExifFacts {
  Turn turn;
  std::optional<Density> density;
};

// `exif` begins with a TIFF header, with or without "Exif" and two zeros before it. What is missing
// or makes no sense counts as not told. Any thread.
ExifFacts ReadExif(std::span<const uint8_t> exif);

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_EXIF_FACTS_H_
