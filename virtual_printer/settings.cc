// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/settings.h"

#include <algorithm>

#include "virtual_printer/command.h"

namespace zr7700::printer {
namespace {

// Takes `text` for one setting; false when it is wrong.
using Setter = bool (*)(std::string_view text, Settings& settings);

template <std::string Settings::*field>
bool SetText(std::string_view text, Settings& settings) {
  settings.*field = text;
  return !text.empty() && text.find('\0') == text.npos;
}

template <uint32_t Settings::*field, uint32_t lowest, uint32_t highest>
bool SetNumber(std::string_view text, Settings& settings) {
  const auto number = ParseNumber(text, highest);
  settings.*field = number.value_or(0);
  return number && *number >= lowest;
}

// Pictures go into the folder for pictures and nowhere else, and their names into lines of text.
bool SetName(std::string_view text, Settings& settings) {
  const auto is_wrong = [](char c) { return c == '/' || static_cast<unsigned char>(c) < 0x20; };
  return SetText<&Settings::name>(text, settings) &&
         std::none_of(text.begin(), text.end(), is_wrong);
}

// As the fault script says it: a letter, "none" or "invalid".
bool SetCartridge(std::string_view text, Settings& settings) {
  std::string error;
  const auto command = ParseCommand("cartridge " + std::string(text), error);
  if (command) settings.cartridge = static_cast<uint8_t>(command->numbers[0]);
  return command.has_value();
}

bool SetDiameter(std::string_view text, Settings& settings) {
  settings.diameter_mm = text == "80" ? 80 : 120;
  return text == "80" || text == "120";
}

bool SetPace(std::string_view text, Settings& settings) {
  const auto seconds = ParseSeconds(text);
  settings.pace_s = seconds.value_or(0);
  return seconds.has_value();
}

constexpr struct {
  std::string_view name;
  Setter set;
  std::string_view takes;
} kNames[] = {
    {"out", SetText<&Settings::out>, "a folder"},
    {"name", SetName, "a name without \"/\" or control characters"},
    {"script", SetText<&Settings::script>, "a file"},
    {"control", SetText<&Settings::control>, "the path of a socket"},
    {"report", SetText<&Settings::report>, "a file"},
    {"cartridge", SetCartridge, "Q, P, U, V, none or invalid"},
    {"discs", SetNumber<&Settings::discs, 0, 1000000>, "a number from 0 to 1000000"},
    {"rate", SetNumber<&Settings::rate_per_s, 1, 1000>, "a number from 1 to 1000"},
    {"diameter", SetDiameter, "80 or 120"},
    {"pace", SetPace, "a time such as 2.5s"},
};

}  // namespace

bool SetByName(std::string_view name, std::string_view text, Settings& settings,
               std::string& error) {
  for (const auto& row : kNames) {
    if (row.name != name) continue;
    if (row.set(text, settings)) return true;
    error = "\"" + std::string(name) + "\" takes " + std::string(row.takes) + ", not \"" +
            std::string(text) + "\".";
    return false;
  }
  error = "There is no setting \"" + std::string(name) + "\".";
  return false;
}

}  // namespace zr7700::printer
