// The ink cartridges that the printer takes.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_CARTRIDGES_H_
#define ZR7700_STATUS_CARTRIDGES_H_

#include <cstdint>

#include "status/status_record.h"

namespace zr7700 {

// Ink-use counts at which a cartridge is low and empty.
struct Cartridge {
  char letter;
  uint32_t ink_limit_low;
  uint32_t ink_limit_high;
  const char* log_text;
};

enum class CartridgeCheck { kOk, kMissing, kInvalid };

struct CartridgeResult {
  CartridgeCheck check;
  const Cartridge* cartridge;  // null unless kOk
};

// The standard cartridge, which limits go by until another one has been seen.
extern const Cartridge& kStandardCartridge;

// The cartridge with this letter, a constant; null when there is none. Any thread.
const Cartridge* FindCartridge(char letter);

// Judges the record's cartridge and logs the judgement. Main thread.
CartridgeResult CheckCartridges(const PrinterStatusRecord& record);

// True when the record's cartridge is known and its largest ink count is above the empty level. Any
// thread.
bool IsInkEmpty(const PrinterStatusRecord& record);

}  // namespace zr7700

#endif  // ZR7700_STATUS_CARTRIDGES_H_
