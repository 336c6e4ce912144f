// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/settings.h"

#include <cstring>
#include <string>

#include "base/log.h"
#include "platform/platform.h"

namespace zr7700 {

Settings settings;

namespace {

// In the order in which the log lists them.
struct SettingRow {
  const char* key;
  int32_t Settings::*field;
  const char* log_label;  // null: not logged
};

constexpr SettingRow kSettings[] = {
    {"LeftMarginOffset", &Settings::LeftMarginOffset, "LeftMarginOffset"},
    {"LeftMarginOffsetHeron", &Settings::LeftMarginOffsetHeron, "LeftMarginOffsetHeron"},
    {"LeftMarginOffsetHeronHighQuality", &Settings::LeftMarginOffsetHeronHighQuality,
     "LeftMarginOffsetHeronHQ"},
    {"TopMarginOffset", &Settings::TopMarginOffset, "TopMarginOffset"},
    {"TopMarginOffsetHeron", &Settings::TopMarginOffsetHeron, "TopMarginOffsetHeron"},
    {"ImageSharpeningLevel", &Settings::ImageSharpeningLevel, "ImageSharpeningLevel"},
    {"RunCompDiv", &Settings::RunCompDiv, "RunCompDiv"},
    {"RunComp", &Settings::RunComp, "RunComp"},
    {"dwStatusFrequency", &Settings::dwStatusFrequency, "StatusFrequency"},
    {"FeedAdjust", &Settings::FeedAdjust, "Feed Adjust"},
    {"OutputDest", &Settings::OutputDest, nullptr},
};

}  // namespace

void ReadSettings(const char* path) {
  for (const SettingRow& row : kSettings) ReadNumberSetting(path, row.key, settings.*row.field);
}

void LogSettings() {
  LogMessage(kLogDetail, "-----  Settings  --------");
  for (const SettingRow& row : kSettings) {
    if (row.log_label == nullptr) continue;
    LogMessage(kLogDetail, "   %s: %i", row.log_label, settings.*row.field);
  }
  LogMessage(kLogDetail, "---------------------------");
}

bool ReadNumberSetting(const char* path, const char* key, int32_t& value) {
  const platform::Lookup found = platform::ReadPropertyNumber(path, key, value);
  return found == platform::Lookup::kFound || found == platform::Lookup::kOtherType;
}

bool ReadStringSetting(const char* path, const char* key, char* buffer, size_t buffer_bytes) {
  std::string text;
  const platform::Lookup found = platform::ReadPropertyString(path, key, text);
  if (found == platform::Lookup::kFound && text.size() < buffer_bytes) {
    memcpy(buffer, text.c_str(), text.size() + 1);
  }
  return found != platform::Lookup::kNoList;
}

bool WriteNumberSetting(const char* path, const char* key, int32_t value) {
  return platform::WritePropertyNumber(path, key, value);
}

}  // namespace zr7700
