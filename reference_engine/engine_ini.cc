#include "reference_engine/engine_ini.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <map>
#include <span>
#include <string_view>

namespace zr7700::reference_engine {
namespace {

// The engine's own files have some ten lines; more than this is somebody's accident.
constexpr int kMaxLines = 1000;

std::string_view Trim(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

// A whole number, or -1 when the text is anything else.
int ParseNumber(std::string_view text) {
  int number = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? number : -1;
}

// "[section]key" to its number.
using Entries = std::map<std::string, int, std::less<>>;

Entries ReadEntries(std::istream& text) {
  Entries entries;
  std::string section;
  std::string line;
  for (int lines = 0; lines < kMaxLines && std::getline(text, line); ++lines) {
    const std::string_view trimmed = Trim(line);
    const size_t equals = trimmed.find('=');
    if (trimmed.starts_with('[')) {
      section = trimmed;
    } else if (equals != std::string_view::npos) {
      const std::string_view key = Trim(trimmed.substr(0, equals));
      entries[section + std::string(key)] = ParseNumber(Trim(trimmed.substr(equals + 1)));
    }
  }
  return entries;
}

// The entry's number if it is one of `known`, else `otherwise`.
int Known(const Entries& entries, std::string_view name, std::span<const int> known,
          int otherwise) {
  const auto entry = entries.find(name);
  if (entry == entries.end()) return otherwise;
  return std::ranges::count(known, entry->second) > 0 ? entry->second : otherwise;
}

constexpr int kColors[] = {1, 2};
constexpr int kPassCounts[] = {1, 2, 4, 8};
constexpr int kDirections[] = {0, 1, 2};

}  // namespace

EngineIni ParseEngineIni(std::istream& text) {
  const Entries entries = ReadEntries(text);
  EngineIni ini;
  if (const auto printer = entries.find("[Configuration]Printer"); printer != entries.end())
    ini.printer = printer->second;
  const auto debug = entries.find("[Configuration]UseDebugSettings");
  if (debug == entries.end() || debug->second != 1) return ini;
  ini.color = Known(entries, "[Configuration]Color", kColors, 0);
  ini.passes = Known(entries, "[ESwathBuilder]Slot1NumPassesOverride", kPassCounts, 0);
  ini.slot1_direction = Known(entries, "[ESwathBuilder]Slot1PrintDirection", kDirections, -1);
  ini.slot2_direction = Known(entries, "[ESwathBuilder]Slot2PrintDirection", kDirections, -1);
  return ini;
}

EngineIni ReadEngineIni(const std::string& path) {
  std::ifstream file(path);
  return ParseEngineIni(file);
}

}  // namespace zr7700::reference_engine
