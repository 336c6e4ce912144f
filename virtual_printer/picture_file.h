// Writing pictures and reports so that nobody ever finds half of one.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_PICTURE_FILE_H_
#define ZR7700_VIRTUAL_PRINTER_PICTURE_FILE_H_

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zr7700::printer {

using Rgb = std::array<uint8_t, 3>;  // sRGB

// A picture of at most 256 colours, a byte a pixel, rows from the top, no padding.
struct IndexedPicture {
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<Rgb> colors;
  std::vector<uint8_t> pixels;  // width * height indices into `colors`
};

// A picture of any colours, rows from the top, no padding.
struct RgbPicture {
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<Rgb> pixels;
};

// Writes the picture as a PNG file at `path`: first under a name beside it, renamed when all of it
// is on the disk. On failure false, with one sentence in `error`; nothing is left behind, and a
// file that was at `path` before stays whole. Any thread.
bool WritePng(const IndexedPicture& picture, const std::string& path, std::string& error);
bool WritePng(const RgbPicture& picture, const std::string& path, std::string& error);

// The same for text.
bool WriteText(std::string_view text, const std::string& path, std::string& error);

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_PICTURE_FILE_H_
