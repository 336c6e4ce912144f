// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/machine.h"

#include <algorithm>
#include <cstdio>
#include <limits>

namespace zr7700::printer {
namespace {

constexpr CartridgeKind kCartridges[] = {
    {'Q', 190000000, 400000000},
    {'P', 463000000, 700000000},
    {'U', 1440000000, 1820000000},
    {'V', 2455000000, 3000000000},
};

constexpr uint32_t kHighest = std::numeric_limits<uint32_t>::max();

bool HasInkProblem(const Machine& machine) {
  return *std::max_element(machine.ink_use.begin(), machine.ink_use.end()) > InkLowLevel(machine);
}

uint32_t ErrorWord(const Machine& machine) {
  return (HasInkProblem(machine) ? kErrorInk : 0) | (machine.discs == 0 ? kErrorBinEmpty : 0);
}

std::string CartridgeText(uint8_t letter) {
  if (FindCartridge(letter) != nullptr)
    return std::string("cartridge ") + static_cast<char>(letter);
  return (letter & 0xF0) == 0x20 ? "no cartridge" : "invalid cartridge";
}

}  // namespace

const CartridgeKind* FindCartridge(uint8_t letter) {
  for (const CartridgeKind& kind : kCartridges) {
    if (kind.letter == letter) return &kind;
  }
  return nullptr;
}

uint32_t InkLowLevel(const Machine& machine) {
  const CartridgeKind* kind = FindCartridge(machine.cartridge);
  return kind == nullptr ? kHighest : std::max(kind->low_above, machine.ink_warning);
}

bool CanPrint(const Machine& machine) {
  return machine.discs > 0 && FindCartridge(machine.cartridge) != nullptr;
}

bool TakeDisc(Machine& machine) {
  if (machine.printing || !CanPrint(machine)) return false;
  --machine.discs;
  machine.printing = true;
  return true;
}

void FinishDisc(Machine& machine) { machine.printing = false; }

void UseInk(Machine& machine, size_t ink, uint64_t counts) {
  uint32_t& use = machine.ink_use.at(ink);
  use += static_cast<uint32_t>(std::min<uint64_t>(counts, kHighest - use));
}

PrinterStatus StatusOf(const Machine& machine) {
  return {.state = machine.printing ? 'B' : 'I',
          .ready = machine.printing && machine.ready == 'I' ? 'H' : machine.ready,
          .error_word = ErrorWord(machine),
          .ink_use = machine.ink_use,
          .cartridge = machine.cartridge,
          .alignment_needed = machine.alignment_needed,
          .alignment_6 = machine.alignment_6,
          .alignment_14 = machine.alignment_14};
}

std::string DescribeMachine(const Machine& machine) {
  const uint32_t error_word = ErrorWord(machine);
  char error[32] = "no error";
  if (error_word != 0) std::snprintf(error, sizeof error, "error word 0x%02X", error_word);
  return std::string(machine.printing ? "busy" : "idle") + ", " + CartridgeText(machine.cartridge) +
         ", " + std::to_string(machine.discs) + (machine.discs == 1 ? " disc, " : " discs, ") +
         error + (machine.alignment_needed ? ", needs aligning" : "");
}

}  // namespace zr7700::printer
