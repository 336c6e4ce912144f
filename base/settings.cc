// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/settings.h"

#include <cstring>
#include <optional>
#include <string>

#include "base/log.h"
#include "base/regular_file.h"
#include "base/replaced_file.h"
#include "platform/platform.h"

namespace zr7700 {

Settings settings;

namespace {

using platform::Lookup;
using platform::PropertyList;

// In the order in which the log lists them.
struct SettingRow {
  const char* key;
  int32_t Settings::*field;
  const char* log_text;  // null: not logged
};

constexpr SettingRow kSettings[] = {
    {"LeftMarginOffset", &Settings::LeftMarginOffset, "   LeftMarginOffset: "},
    {"LeftMarginOffsetHeron", &Settings::LeftMarginOffsetHeron, "   LeftMarginOffsetHeron: "},
    {"LeftMarginOffsetHeronHighQuality", &Settings::LeftMarginOffsetHeronHighQuality,
     "   LeftMarginOffsetHeronHQ: "},
    {"TopMarginOffset", &Settings::TopMarginOffset, "   TopMarginOffset: "},
    {"TopMarginOffsetHeron", &Settings::TopMarginOffsetHeron, "   TopMarginOffsetHeron: "},
    {"ImageSharpeningLevel", &Settings::ImageSharpeningLevel, "   ImageSharpeningLevel: "},
    {"RunCompDiv", &Settings::RunCompDiv, "   RunCompDiv: "},
    {"RunComp", &Settings::RunComp, "   RunComp: "},
    {"dwStatusFrequency", &Settings::dwStatusFrequency, "   StatusFrequency: "},
    {"FeedAdjust", &Settings::FeedAdjust, "   Feed Adjust: "},
    {"OutputDest", &Settings::OutputDest, nullptr},
};

// Nothing when the file cannot be read or holds no list.
std::optional<PropertyList> ReadList(const char* path) {
  std::string bytes;
  const FileReading reading =
      ReadRegularFile(path, Links::kFollowed, platform::kMostPropertyListBytes, bytes);
  if (reading != FileReading::kRead) return std::nullopt;
  return PropertyList::Parse(bytes);
}

}  // namespace

void ReadSettings(const char* path) {
  const std::optional<PropertyList> list = ReadList(path);
  if (!list) return;
  for (const SettingRow& row : kSettings) list->Number(row.key, settings.*row.field);
}

void LogSettings() {
  LogMessage(kLogDetail, "-----  Settings  --------");
  for (const SettingRow& row : kSettings) {
    if (row.log_text == nullptr) continue;
    LogMessage(kLogDetail, "%s%i", row.log_text, settings.*row.field);
  }
  LogMessage(kLogDetail, "---------------------------");
}

bool ReadStringSetting(const char* path, const char* key, char* buffer, size_t buffer_bytes) {
  const std::optional<PropertyList> list = ReadList(path);
  if (!list) return false;
  std::string text;
  if (list->String(key, text) == Lookup::kFound && text.size() < buffer_bytes) {
    memcpy(buffer, text.c_str(), text.size() + 1);
  }
  return true;
}

bool WriteNumberSetting(const char* path, const char* key, int32_t value) {
  std::optional<PropertyList> list = ReadList(path);
  if (!list || !list->SetNumber(key, value)) return false;
  const std::string xml = list->Xml();
  if (!xml.empty()) ReplaceFile(path, xml);
  return true;
}

}  // namespace zr7700
