// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/engine_ini.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <span>

#include "base/regular_file.h"
#include "reference_engine/engine_status.h"

namespace zr7700::reference_engine {
namespace {

// The host's files have some ten lines; more than this is somebody's accident.
constexpr size_t kMaxIniBytes = 64 << 10;

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

Entries ReadEntries(std::string_view text) {
  Entries entries;
  std::string section;
  while (!text.empty()) {
    const size_t line_end = std::min(text.find('\n'), text.size());
    const std::string_view line = Trim(text.substr(0, line_end));
    text.remove_prefix(std::min(line_end + 1, text.size()));
    const size_t equals = line.find('=');
    if (line.starts_with('[')) {
      section = line;
    } else if (equals != std::string_view::npos) {
      const std::string_view key = Trim(line.substr(0, equals));
      entries[section + std::string(key)] = ParseNumber(Trim(line.substr(equals + 1)));
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

EngineIni ParseEngineIni(std::string_view text) {
  const Entries entries = ReadEntries(text);
  EngineIni ini;
  if (const auto printer = entries.find("[Configuration]Printer"); printer != entries.end())
    ini.printer = printer->second;
  const auto debug = entries.find("[Configuration]UseDebugSettings");
  if (debug == entries.end() || debug->second != 1) return ini;
  ini.color = Known(entries, "[Configuration]Color", kColors, 0);
  ini.passes = Known(entries, "[ESwathBuilder]Slot1NumPassesOverride", kPassCounts, 0);
  ini.slot1_direction = Known(entries, "[ESwathBuilder]Slot1PrintDirection", kDirections, -1);
  return ini;
}

int32_t ReadEngineIni(const std::string& path, EngineIni* ini) {
  std::string text;
  const FileReading reading = ReadRegularFile(path.c_str(), Links::kFollowed, kMaxIniBytes, text);
  if (reading != FileReading::kRead && reading != FileReading::kMissing) return kBadConfiguration;
  *ini = ParseEngineIni(text);
  return kOk;
}

}  // namespace zr7700::reference_engine
