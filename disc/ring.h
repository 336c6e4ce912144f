// The printable ring of a disc: how wide it is, line by line.
//
// Everything is in dots of the page. The filter's clip table and whoever whitens a page before the
// filter draw the same ring because they draw it with these. All functions: any thread.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DISC_RING_H_
#define ZR7700_DISC_RING_H_

#include <cstdint>

namespace zr7700 {

// The margin at the outer edge in dots at 600 dpi, for the PPD's tenths of a millimetre; towards
// zero, and negative for a negative margin.
int32_t MarginDots(int32_t tenths_mm);

// The hole's radius in dots at 600 dpi, for its diameter in tenths of a millimetre, of which the
// low 16 bits count.
uint32_t HoleRadiusDots(uint32_t tenths_mm);

// Half the width of a round disc of `diameter_dots`, `from_middle` lines away from its middle line.
// The disc is drawn about 0.17 % narrower than it is tall.
uint16_t OutlineHalfWidth(uint32_t diameter_dots, int from_middle);

// Half the width of a hole of `diameter_dots`, half of `twice_from_middle` lines away from its
// middle line; twice_from_middle <= diameter_dots.
uint16_t HoleHalfWidth(uint32_t diameter_dots, uint32_t twice_from_middle);

// The square root without its fraction, in 16 bits; 0 for a negative number.
uint16_t TruncatedRoot(double square);

}  // namespace zr7700

#endif  // ZR7700_DISC_RING_H_
