// The orders that a fault script and the control socket give: one line of text, one order.
// docs/virtual-printer.md has the language.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_COMMAND_H_
#define ZR7700_VIRTUAL_PRINTER_COMMAND_H_

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "virtual_printer/machine.h"

namespace zr7700::printer {

enum class Verb {
  // To the machine.
  kCartridge,  // numbers[0]: the letter
  kAlign,      // numbers[0]: 1 when the cartridge needs aligning
  kAlignment,  // numbers[0], [1]: alignment items 6 and 14
  kInk,        // numbers: the three ink-use counts
  kInkLow,     // the counters just above the cartridge's low level
  kInkEmpty,   // the counters just above its empty level
  kBin,        // numbers[0]: discs in the bin
  kReady,      // numbers[0]: the ready letter
  // To the back channel.
  kSilence,   // seconds
  kSplit,     // numbers[0]: bytes of the first piece of every record; 0 ends it
  kMisalign,  // numbers[0]: bytes of a record's tail to send before the next record
  kNoise,     // numbers[0]: random bytes to send
  kBadSum,    // numbers[0]: records to send with a wrong checksum
  // To the listener.
  kStatus,  // say how things stand
};

struct Command {
  Verb verb = Verb::kStatus;
  std::array<uint32_t, 3> numbers{};
  double seconds = 0;
};

// The order that `text` gives; nothing when it gives none, with one sentence in `error`. Any
// thread.
std::optional<Command> ParseCommand(std::string_view text, std::string& error);

// A time such as "2.5s" or "3": seconds from 0 to 86400. Nothing when `text` is no time. Any
// thread.
std::optional<double> ParseSeconds(std::string_view text);

// A decimal number from 0 to `highest`, digits only. Any thread.
std::optional<uint32_t> ParseNumber(std::string_view text, uint32_t highest);

// Carries an order to the machine out; false when the order is not for the machine.
bool ObeyMachineCommand(const Command& command, Machine& machine);

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_COMMAND_H_
