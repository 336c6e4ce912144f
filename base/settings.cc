// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/settings.h"

#include <cstring>
#include <string>

#include "platform/platform.h"

namespace zr7700 {

Settings settings;

namespace {

struct SettingKey {
  const char* key;
  int32_t Settings::*field;
};

constexpr SettingKey kKeys[] = {
    {"LeftMarginOffset", &Settings::LeftMarginOffset},
    {"TopMarginOffset", &Settings::TopMarginOffset},
    {"TopMarginOffsetHeron", &Settings::TopMarginOffsetHeron},
    {"LeftMarginOffsetHeron", &Settings::LeftMarginOffsetHeron},
    {"LeftMarginOffsetHeronHighQuality", &Settings::LeftMarginOffsetHeronHighQuality},
    {"ImageSharpeningLevel", &Settings::ImageSharpeningLevel},
    {"RunComp", &Settings::RunComp},
    {"RunCompDiv", &Settings::RunCompDiv},
    {"dwStatusFrequency", &Settings::dwStatusFrequency},
    {"FeedAdjust", &Settings::FeedAdjust},
    {"OutputDest", &Settings::OutputDest},
};

}  // namespace

void ReadSettings(const char* path) {
  for (const SettingKey& entry : kKeys) ReadNumberSetting(path, entry.key, settings.*entry.field);
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
