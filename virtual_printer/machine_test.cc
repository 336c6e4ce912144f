// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/machine.h"

#include <gtest/gtest.h>

namespace zr7700::printer {
namespace {

uint32_t ErrorWordAt(uint8_t cartridge, std::array<uint32_t, 3> ink_use) {
  Machine machine;
  machine.cartridge = cartridge;
  machine.ink_use = ink_use;
  return StatusOf(machine).error_word;
}

TEST(Machine, InkBitRisesJustAboveTheLowLevelOfEachCartridge) {
  const struct {
    uint8_t letter;
    uint32_t low;
  } rows[] = {{'Q', 190000000}, {'P', 463000000}, {'U', 1440000000}, {'V', 2455000000}};
  for (const auto& row : rows) {
    EXPECT_EQ(ErrorWordAt(row.letter, {row.low, row.low, row.low}), 0u) << row.letter;
    EXPECT_EQ(ErrorWordAt(row.letter, {1, row.low + 1, 1}), 0x10u) << row.letter;
    EXPECT_EQ(ErrorWordAt(row.letter, {1, 1, 4294967295u}), 0x10u) << row.letter;
  }
}

TEST(Machine, NoCartridgeHasNoInkProblem) {
  EXPECT_EQ(ErrorWordAt(kNoCartridge, {4294967295u, 0, 0}), 0u);
  EXPECT_EQ(ErrorWordAt(kInvalidCartridge, {4294967295u, 0, 0}), 0u);
}

TEST(Machine, APrintHeaderCanRaiseTheWarningLevelButNotLowerIt) {
  Machine machine;
  machine.ink_use = {190000001, 0, 0};
  machine.ink_warning = 166250000;
  EXPECT_EQ(StatusOf(machine).error_word, 0x10u);
  machine.ink_warning = 400000000;
  EXPECT_EQ(StatusOf(machine).error_word, 0u);
  machine.ink_use = {400000001, 0, 0};
  EXPECT_EQ(StatusOf(machine).error_word, 0x10u);
}

TEST(Machine, TheBinEmptiesDiscByDisc) {
  Machine machine;
  machine.discs = 2;
  EXPECT_TRUE(TakeDisc(machine));
  EXPECT_EQ(StatusOf(machine).state, 'B');
  EXPECT_EQ(StatusOf(machine).ready, 'H');
  EXPECT_FALSE(TakeDisc(machine)) << "one disc at a time";
  FinishDisc(machine);
  EXPECT_EQ(StatusOf(machine).state, 'I');
  EXPECT_EQ(StatusOf(machine).ready, 'I');
  EXPECT_EQ(StatusOf(machine).error_word, 0u);
  EXPECT_TRUE(TakeDisc(machine));
  FinishDisc(machine);
  EXPECT_EQ(StatusOf(machine).error_word, 0x24u);
  EXPECT_FALSE(CanPrint(machine));
  EXPECT_FALSE(TakeDisc(machine));
  EXPECT_EQ(StatusOf(machine).state, 'I') << "a printer that waits for discs is not busy";
  machine.discs = 1;
  EXPECT_TRUE(TakeDisc(machine));
  EXPECT_EQ(machine.discs, 0u);
}

TEST(Machine, WithoutAValidCartridgeNothingIsPrinted) {
  Machine machine;
  for (const uint8_t letter : {kNoCartridge, kInvalidCartridge, uint8_t{0x2F}, uint8_t{0}}) {
    machine.cartridge = letter;
    EXPECT_FALSE(TakeDisc(machine));
    EXPECT_EQ(machine.discs, 25u);
  }
}

TEST(Machine, InkCountersStopAtTheirHighestNumber) {
  Machine machine;
  machine.ink_use = {4294967290u, 7, 0};
  UseInk(machine, 0, 5);
  EXPECT_EQ(machine.ink_use[0], 4294967295u);
  UseInk(machine, 0, 1);
  EXPECT_EQ(machine.ink_use[0], 4294967295u);
  UseInk(machine, 1, 10000000000u);
  EXPECT_EQ(machine.ink_use[1], 4294967295u);
  EXPECT_EQ(machine.ink_use[2], 0u);
}

TEST(Machine, DescribesItself) {
  Machine machine;
  EXPECT_EQ(DescribeMachine(machine), "idle, cartridge Q, 25 discs, no error");
  machine.discs = 0;
  machine.cartridge = 0x25;
  machine.alignment_needed = true;
  EXPECT_EQ(DescribeMachine(machine),
            "idle, no cartridge, 0 discs, error word 0x24, needs aligning");
}

}  // namespace
}  // namespace zr7700::printer
