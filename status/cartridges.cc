// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/cartridges.h"

#include "base/log.h"

namespace zr7700 {
namespace {

constexpr Cartridge kCartridges[] = {
    {'Q', 190'000'000, 400'000'000, "CheckCartridges: ** Cartridges are ok"},
    {'P', 463'000'000, 700'000'000, "CheckCartridges: ** Cartridges are ok (PRO Cart Installed)"},
    {'U', 1'440'000'000, 1'820'000'000,
     "CheckCartridges: ** Cartridges are ok (HERON Cart Installed)"},
    {'V', 2'455'000'000, 3'000'000'000,
     "CheckCartridges: ** Cartridges are ok (HERON QX Cart Installed)"},
};

// The letters 0x20 to 0x2F stand for an empty slot.
bool IsEmptySlot(char letter) { return (static_cast<uint8_t>(letter) >> 4) == 2; }

}  // namespace

const Cartridge& kStandardCartridge = kCartridges[0];

const Cartridge* FindCartridge(char letter) {
  for (const Cartridge& cartridge : kCartridges) {
    if (cartridge.letter == letter) return &cartridge;
  }
  return nullptr;
}

CartridgeResult CheckCartridges(const PrinterStatusRecord& record) {
  LogMessage(kLogDetail, "In CheckCartridges");
  const char letter = CartridgeLetter(record);
  if (const Cartridge* const cartridge = FindCartridge(letter)) {
    LogMessage(kLogDetail, "%s", cartridge->log_text);
    return {CartridgeCheck::kOk, cartridge};
  }
  if (IsEmptySlot(letter)) {
    LogMessage(kLogDetail, "CheckCartridges: No cartridges installed");
    return {CartridgeCheck::kMissing, nullptr};
  }
  LogMessage(kLogDetail, "CheckCartridges: Invalid cartridges (CMY) installed");
  return {CartridgeCheck::kInvalid, nullptr};
}

bool IsInkEmpty(const PrinterStatusRecord& record) {
  const Cartridge* const cartridge = FindCartridge(CartridgeLetter(record));
  return cartridge != nullptr && LargestInkCount(record) > cartridge->ink_limit_high;
}

}  // namespace zr7700
