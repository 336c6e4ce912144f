// What the virtual printer is made of besides its print head: cartridge, ink use, the bin of discs,
// and what of them its status records show.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_MACHINE_H_
#define ZR7700_VIRTUAL_PRINTER_MACHINE_H_

#include <array>
#include <cstdint>
#include <string>

#include "virtual_printer/status_record.h"

namespace zr7700::printer {

// Cartridge letters besides those of the four kinds.
inline constexpr uint8_t kNoCartridge = 0x20;
inline constexpr uint8_t kInvalidCartridge = 'X';

// A kind of cartridge and the ink use above which it counts as low and as empty.
struct CartridgeKind {
  uint8_t letter;
  uint32_t low_above;
  uint32_t empty_above;
};

// The kind with that letter; null for no cartridge and for an invalid one. Any thread.
const CartridgeKind* FindCartridge(uint8_t letter);

// One printer. Used by one thread.
struct Machine {
  uint8_t cartridge = 'Q';
  bool alignment_needed = false;
  uint8_t alignment_6 = 0;
  uint8_t alignment_14 = 0;
  std::array<uint32_t, 3> ink_use{};               // counts: cyan, magenta, yellow
  uint32_t CartridgeKind::*awaited_ink = nullptr;  // a level to set with the next valid cartridge
  uint32_t ink_warning = 0;  // counts; the level that the last print header asked for
  uint32_t discs = 25;       // in the input bin
  bool printing = false;     // a disc lies under the print head
  char ready = 'I';          // the letter shown while nothing is printed
};

// Ink use above which the printer warns: the cartridge's own level, or the print header's where
// that is higher (a job may ask not to be warned before the ink is at its end). The highest number
// there is when no valid cartridge is in. Any thread.
uint32_t InkLowLevel(const Machine& machine);

// Whether a page that has begun to arrive can be printed: a disc and a valid cartridge are there.
bool CanPrint(const Machine& machine);

// Takes a disc from the bin and begins to print on it; false, and nothing changes, when it cannot.
bool TakeDisc(Machine& machine);

// Puts the printed disc out; the printer is idle then.
void FinishDisc(Machine& machine);

// Adds to the use of ink 0 to 2; a counter stops at its highest number.
void UseInk(Machine& machine, size_t ink, uint64_t counts);

// What the printer's status records say at this moment.
PrinterStatus StatusOf(const Machine& machine);

// The same in one line of text, without the ink counts: "idle, cartridge Q, 25 discs, no error".
std::string DescribeMachine(const Machine& machine);

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_MACHINE_H_
