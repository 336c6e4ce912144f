// The words of a page's raster header that CUPS declares as enumerations.
//
// A header comes from outside and may hold any number there; reading it as an enumeration that does
// not reach so far would be undefined.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DISC_RASTER_HEADER_H_
#define ZR7700_DISC_RASTER_HEADER_H_

#include <cups/raster.h>

#include <cstdint>
#include <cstring>

namespace zr7700 {

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
