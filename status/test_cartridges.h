// The cartridges as the tests know them: the product's table written down a second time.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_TEST_CARTRIDGES_H_
#define ZR7700_STATUS_TEST_CARTRIDGES_H_

#include <cstdint>

namespace zr7700 {

// Ink-use counts at which a cartridge is low, and above which it is empty.
struct ExpectedCartridge {
  char letter;
  uint32_t low;
  uint32_t high;
  const char* log;
};

// The standard cartridge first.
inline constexpr ExpectedCartridge kExpectedCartridges[] = {
    {'Q', 190'000'000, 400'000'000, "CheckCartridges: ** Cartridges are ok"},
    {'P', 463'000'000, 700'000'000, "CheckCartridges: ** Cartridges are ok (PRO Cart Installed)"},
    {'U', 1'440'000'000, 1'820'000'000,
     "CheckCartridges: ** Cartridges are ok (HERON Cart Installed)"},
    {'V', 2'455'000'000, 3'000'000'000,
     "CheckCartridges: ** Cartridges are ok (HERON QX Cart Installed)"},
};

}  // namespace zr7700

#endif  // ZR7700_STATUS_TEST_CARTRIDGES_H_
