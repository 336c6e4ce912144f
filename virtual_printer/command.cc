// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/command.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <span>

#include "virtual_printer/words.h"

namespace zr7700::printer {
namespace {

constexpr uint32_t kHighest = std::numeric_limits<uint32_t>::max();
constexpr double kLongestTime = 86400;  // a day

using Words = std::span<const std::string_view>;

// One way to say an order: its first word, a fixed second word or none, how many numbers follow
// (the last of the fewest to most are optional) and how high they may be.
struct Phrase {
  std::string_view word;
  std::string_view second;
  Verb verb;
  size_t fewest;
  size_t most;
  uint32_t highest;
  uint32_t preset;  // numbers[0] when no number follows
  std::string_view usage;
};

constexpr std::string_view kCartridgeUsage =
    "\"cartridge\" takes Q, P, U, V, \"none\" or \"invalid\".";
constexpr std::string_view kAlignUsage = "\"align\" takes \"on\" or \"off\".";
constexpr std::string_view kInkUsage =
    "\"ink\" takes \"low\", \"empty\", \"full\", or one or three counts from 0 to 4294967295.";

constexpr Phrase kPhrases[] = {
    {"cartridge", "Q", Verb::kCartridge, 0, 0, 0, 'Q', kCartridgeUsage},
    {"cartridge", "P", Verb::kCartridge, 0, 0, 0, 'P', kCartridgeUsage},
    {"cartridge", "U", Verb::kCartridge, 0, 0, 0, 'U', kCartridgeUsage},
    {"cartridge", "V", Verb::kCartridge, 0, 0, 0, 'V', kCartridgeUsage},
    {"cartridge", "none", Verb::kCartridge, 0, 0, 0, kNoCartridge, kCartridgeUsage},
    {"cartridge", "invalid", Verb::kCartridge, 0, 0, 0, kInvalidCartridge, kCartridgeUsage},
    {"align", "on", Verb::kAlign, 0, 0, 0, 1, kAlignUsage},
    {"align", "off", Verb::kAlign, 0, 0, 0, 0, kAlignUsage},
    {"alignment", "", Verb::kAlignment, 2, 2, 255, 0,
     "\"alignment\" takes two numbers from 0 to 255."},
    {"ink", "low", Verb::kInkLow, 0, 0, 0, 0, kInkUsage},
    {"ink", "empty", Verb::kInkEmpty, 0, 0, 0, 0, kInkUsage},
    {"ink", "full", Verb::kInk, 0, 0, 0, 0, kInkUsage},
    {"ink", "", Verb::kInk, 1, 3, kHighest, 0, kInkUsage},
    {"bin", "", Verb::kBin, 1, 1, 1000000, 0, "\"bin\" takes a number of discs, 0 to 1000000."},
    {"ready", "on", Verb::kReady, 0, 0, 0, 'I', "\"ready\" takes \"on\" or \"off\"."},
    {"ready", "off", Verb::kReady, 0, 0, 0, 'N', "\"ready\" takes \"on\" or \"off\"."},
    {"split", "", Verb::kSplit, 1, 1, kRecordBytes - 1, 0,
     "\"split\" takes the bytes of the first piece, 1 to 143, or 0 to send records whole."},
    {"misalign", "", Verb::kMisalign, 1, 1, kRecordBytes - 1, 0,
     "\"misalign\" takes a number of bytes, 0 to 143."},
    {"noise", "", Verb::kNoise, 0, 1, 65536, kRecordBytes,
     "\"noise\" takes a number of bytes, 0 to 65536, or nothing."},
    {"badsum", "", Verb::kBadSum, 0, 1, 1000000, 1,
     "\"badsum\" takes a number of records, 0 to 1000000, or nothing."},
    {"status", "", Verb::kStatus, 0, 0, 0, 0, "\"status\" takes nothing."},
};

// Whether `rest`, the words after the phrase's own, are the numbers that the phrase takes.
bool TakeNumbers(const Phrase& phrase, Words rest, Command& command) {
  if (rest.size() < phrase.fewest || rest.size() > phrase.most) return false;
  command.numbers[0] = phrase.preset;
  for (size_t i = 0; i < rest.size(); ++i) {
    const auto number = ParseNumber(rest[i], phrase.highest);
    if (!number) return false;
    command.numbers[i] = *number;
  }
  return true;
}

bool MatchPhrase(const Phrase& phrase, Words words, Command& command) {
  command = {.verb = phrase.verb};
  if (phrase.second.empty()) return TakeNumbers(phrase, words.subspan(1), command);
  if (words.size() < 2 || words[1] != phrase.second) return false;
  return TakeNumbers(phrase, words.subspan(2), command);
}

// "silence" is the one order that takes a time.
std::optional<Command> ParseSilence(Words words, std::string& error) {
  const auto seconds = words.size() == 2 ? ParseSeconds(words[1]) : std::nullopt;
  if (seconds) return Command{.verb = Verb::kSilence, .seconds = *seconds};
  error = "\"silence\" takes a time such as 3s.";
  return std::nullopt;
}

// One count means all three inks; two counts mean nothing.
bool CompleteInk(size_t words, Command& command) {
  if (command.verb != Verb::kInk) return true;
  if (words == 2) command.numbers.fill(command.numbers[0]);
  return words != 3;
}

// The ink just above a level of the cartridge; without a valid one, of the next that is put in.
void SetInk(Machine& machine, uint32_t CartridgeKind::*level) {
  const CartridgeKind* kind = FindCartridge(machine.cartridge);
  machine.awaited_ink = kind == nullptr ? level : nullptr;
  if (kind != nullptr) machine.ink_use.fill(kind->*level + 1);
}

void SetCartridge(Machine& machine, uint32_t letter) {
  machine.cartridge = static_cast<uint8_t>(letter);
  if (machine.awaited_ink != nullptr) SetInk(machine, machine.awaited_ink);
}

}  // namespace

std::optional<uint32_t> ParseNumber(std::string_view text, uint32_t highest) {
  uint32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, problem] = std::from_chars(text.data(), end, number);
  if (problem != std::errc() || stop != end || number > highest) return std::nullopt;
  return number;
}

std::optional<double> ParseSeconds(std::string_view text) {
  if (text.ends_with('s')) text.remove_suffix(1);
  double seconds = 0;
  const char* end = text.data() + text.size();
  const auto [stop, problem] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
  if (problem != std::errc() || stop != end) return std::nullopt;
  // Written so that what is not a number fails too.
  if (!(seconds >= 0 && seconds <= kLongestTime)) return std::nullopt;
  return seconds;
}

std::optional<Command> ParseCommand(std::string_view text, std::string& error) {
  const std::vector<std::string_view> words = SplitWords(text);
  if (words.empty()) {
    error = "There is no command.";
    return std::nullopt;
  }
  if (words[0] == "silence") return ParseSilence(words, error);
  error = "There is no command \"" + std::string(words[0]) + "\".";
  for (const Phrase& phrase : kPhrases) {
    if (phrase.word != words[0]) continue;
    Command command;
    if (MatchPhrase(phrase, words, command) && CompleteInk(words.size(), command)) return command;
    error = phrase.usage;
  }
  return std::nullopt;
}

bool ObeyMachineCommand(const Command& command, Machine& machine) {
  const auto& numbers = command.numbers;
  switch (command.verb) {
    case Verb::kCartridge:
      SetCartridge(machine, numbers[0]);
      return true;
    case Verb::kAlign:
      machine.alignment_needed = numbers[0] != 0;
      return true;
    case Verb::kAlignment:
      machine.alignment_6 = static_cast<uint8_t>(numbers[0]);
      machine.alignment_14 = static_cast<uint8_t>(numbers[1]);
      return true;
    case Verb::kInk:
      machine.ink_use = numbers;
      machine.awaited_ink = nullptr;
      return true;
    case Verb::kInkLow:
      SetInk(machine, &CartridgeKind::low_above);
      return true;
    case Verb::kInkEmpty:
      SetInk(machine, &CartridgeKind::empty_above);
      return true;
    case Verb::kBin:
      machine.discs = numbers[0];
      return true;
    case Verb::kReady:
      machine.ready = static_cast<char>(numbers[0]);
      return true;
    default:
      return false;
  }
}

}  // namespace zr7700::printer
