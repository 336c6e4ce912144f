// What drops look like: the reference ink model of docs/printer-stream.md.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_INK_MODEL_H_
#define ZR7700_VIRTUAL_PRINTER_INK_MODEL_H_

#include <array>
#include <cstdint>

#include "virtual_printer/page_canvas.h"
#include "virtual_printer/picture_file.h"

namespace zr7700::printer {

// Red, green and blue in linear light, 0 to 1.
using Light = std::array<double, 3>;

// The colour of every kind of dot (see PageCanvas) that the family prints on the media. Media that
// the family does not know look like its first. Any thread.
std::array<Light, kDotKinds> DotLights(Family family, uint8_t media);

// Linear light as sRGB, rounded to the nearest step. Any thread.
Rgb ToSrgb(const Light& light);

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_INK_MODEL_H_
