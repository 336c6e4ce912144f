// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/command.h"

#include <gtest/gtest.h>

namespace zr7700::printer {
namespace {

// The machine after the order `text`.
Machine After(std::string_view text, Machine machine = {}) {
  std::string error;
  const auto command = ParseCommand(text, error);
  EXPECT_TRUE(command.has_value()) << text << ": " << error;
  EXPECT_TRUE(command && ObeyMachineCommand(*command, machine)) << text;
  return machine;
}

TEST(Command, Cartridges) {
  EXPECT_EQ(After("cartridge U").cartridge, 'U');
  EXPECT_EQ(After("cartridge P").cartridge, 'P');
  EXPECT_EQ(After("cartridge V").cartridge, 'V');
  EXPECT_EQ(After("  cartridge\tQ \r").cartridge, 'Q');
  EXPECT_EQ(After("cartridge none").cartridge & 0xF0, 0x20);
  const uint8_t invalid = After("cartridge invalid").cartridge;
  EXPECT_NE(invalid & 0xF0, 0x20);
  EXPECT_EQ(std::string_view("QPUV").find(static_cast<char>(invalid)), std::string_view::npos);
}

TEST(Command, Alignment) {
  EXPECT_TRUE(After("align on").alignment_needed);
  Machine machine;
  machine.alignment_needed = true;
  EXPECT_FALSE(After("align off", machine).alignment_needed);
  EXPECT_EQ(After("alignment 7 255").alignment_6, 7);
  EXPECT_EQ(After("alignment 7 255").alignment_14, 255);
}

TEST(Command, InkCounts) {
  using Counts = std::array<uint32_t, 3>;
  EXPECT_EQ(After("ink 400000001").ink_use, (Counts{400000001, 400000001, 400000001}));
  EXPECT_EQ(After("ink 1 2 4294967295").ink_use, (Counts{1, 2, 4294967295u}));
  EXPECT_EQ(After("ink low").ink_use, (Counts{190000001, 190000001, 190000001}));
  EXPECT_EQ(After("ink empty").ink_use, (Counts{400000001, 400000001, 400000001}));
  Machine machine;
  machine.cartridge = 'V';
  EXPECT_EQ(After("ink low", machine).ink_use, (Counts{2455000001, 2455000001, 2455000001}));
  EXPECT_EQ(After("ink empty", machine).ink_use, (Counts{3000000001, 3000000001, 3000000001}));
  machine.ink_use = {1, 2, 3};
  EXPECT_EQ(After("ink full", machine).ink_use, (Counts{0, 0, 0}));
  machine.cartridge = kNoCartridge;
  EXPECT_EQ(After("ink low", machine).ink_use, (Counts{1, 2, 3})) << "no cartridge, no ink";
}

TEST(Command, AnInkLevelWithoutACartridgeIsThatOfTheNext) {
  using Counts = std::array<uint32_t, 3>;
  const Machine waiting = After("ink empty", After("cartridge none"));
  EXPECT_EQ(waiting.ink_use, Counts{});
  const Machine still = After("cartridge invalid", waiting);
  EXPECT_EQ(still.ink_use, Counts{});
  const Machine filled = After("cartridge U", still);
  EXPECT_EQ(filled.ink_use, (Counts{1820000001, 1820000001, 1820000001}));
  EXPECT_EQ(After("cartridge V", After("ink full", filled)).ink_use, Counts{}) << "only once";
  EXPECT_EQ(After("cartridge Q", After("ink 5", waiting)).ink_use, (Counts{5, 5, 5}));
}

TEST(Command, BinAndReadyLetter) {
  EXPECT_EQ(After("bin 0").discs, 0u);
  EXPECT_EQ(After("bin 25").discs, 25u);
  EXPECT_EQ(After("ready off").ready, 'N');
  EXPECT_EQ(After("ready on").ready, 'I');
}

TEST(Command, BackChannelOrders) {
  std::string error;
  EXPECT_EQ(ParseCommand("silence 3s", error)->seconds, 3.0);
  EXPECT_EQ(ParseCommand("silence 0.25", error)->seconds, 0.25);
  EXPECT_EQ(ParseCommand("split 100", error)->numbers[0], 100u);
  EXPECT_EQ(ParseCommand("misalign 37", error)->numbers[0], 37u);
  EXPECT_EQ(ParseCommand("noise", error)->numbers[0], 144u);
  EXPECT_EQ(ParseCommand("noise 9", error)->numbers[0], 9u);
  EXPECT_EQ(ParseCommand("badsum 5", error)->numbers[0], 5u);
  Machine machine;
  EXPECT_FALSE(ObeyMachineCommand(*ParseCommand("badsum 5", error), machine));
}

TEST(Command, WhatIsNoOrderGetsASentence) {
  const struct {
    const char* text;
    const char* sentence;
  } rows[] = {
      {"", "There is no command."},
      {"explode", "There is no command \"explode\"."},
      {"cartridge", "\"cartridge\" takes Q, P, U, V, \"none\" or \"invalid\"."},
      {"cartridge q", "\"cartridge\" takes Q, P, U, V, \"none\" or \"invalid\"."},
      {"cartridge Q now", "\"cartridge\" takes Q, P, U, V, \"none\" or \"invalid\"."},
      {"align maybe", "\"align\" takes \"on\" or \"off\"."},
      {"bin -1", "\"bin\" takes a number of discs, 0 to 1000000."},
      {"bin 25x", "\"bin\" takes a number of discs, 0 to 1000000."},
      {"silence", "\"silence\" takes a time such as 3s."},
      {"silence -3s", "\"silence\" takes a time such as 3s."},
      {"silence nan", "\"silence\" takes a time such as 3s."},
      {"silence 3s 4s", "\"silence\" takes a time such as 3s."},
      {"status now", "\"status\" takes nothing."},
  };
  for (const auto& row : rows) {
    std::string error;
    EXPECT_FALSE(ParseCommand(row.text, error).has_value()) << row.text;
    EXPECT_EQ(error, row.sentence) << row.text;
  }
  for (const char* text : {"ink", "ink 1 2", "ink 1 2 3 4", "ink 4294967296", "ink -1", "split 144",
                           "misalign 144", "noise 65537", "alignment 1", "alignment 1 256"}) {
    std::string error;
    EXPECT_FALSE(ParseCommand(text, error).has_value()) << text;
    EXPECT_NE(error.find(std::string_view(text).substr(0, 3)), error.npos) << error;
  }
}

}  // namespace
}  // namespace zr7700::printer
