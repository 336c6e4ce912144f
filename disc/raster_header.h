// What a page's raster header says, looked at without trust in it: it comes from outside.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DISC_RASTER_HEADER_H_
#define ZR7700_DISC_RASTER_HEADER_H_

#include <cups/raster.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <span>

namespace zr7700 {

// The longest line that any filter takes.
inline constexpr uint32_t kMostLinePixels = 131'072;

// The form of a stream's headers, told by the four bytes that it begins with.
struct RasterForm {
  size_t header_bytes = 0;  // 0 for what is no raster
  bool is_swapped = false;  // the words are of the other byte order
  bool is_compressed = false;
};

// Of a phone's raster, whose headers are short.
inline constexpr size_t kShortHeaderBytes = 32;

RasterForm FormOfRaster(const std::array<unsigned char, 4>& sync_word);

// The header that stands in `bytes`, form.header_bytes of them, as libcups is going to read it; of
// a short one only what tells a line's length. Any thread.
cups_page_header2_t DecodeHeader(std::span<const unsigned char> bytes, const RasterForm& form);

// Whether a line has more than kMostLinePixels pixels of whole bytes, or more bytes than as many of
// the largest pixels that CUPS knows. Any thread.
bool IsLineTooLong(const cups_page_header2_t& header);

// The words that CUPS declares as enumerations may hold any number; reading one as an enumeration
// that does not reach so far would be undefined.
template <typename Field>
uint32_t HeaderWord(const Field& field) {
  static_assert(sizeof(Field) == sizeof(uint32_t));
  uint32_t word;
  memcpy(&word, &field, sizeof word);
  return word;
}

// The header's colour space and colour order, whatever numbers they are. Any thread.
inline uint32_t ColorSpaceOf(const cups_page_header2_t& header) {
  return HeaderWord(header.cupsColorSpace);
}
inline uint32_t ColorOrderOf(const cups_page_header2_t& header) {
  return HeaderWord(header.cupsColorOrder);
}

}  // namespace zr7700

#endif  // ZR7700_DISC_RASTER_HEADER_H_
