// The settings file: eleven tuning values that an administrator may override.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_SETTINGS_H_
#define ZR7700_BASE_SETTINGS_H_

#include <cstddef>
#include <cstdint>

namespace zr7700 {

// Each setting carries the name of its key; the values here are the built-in defaults. Margin
// offsets are in dots at 600 dpi, FeedAdjust in the printer's feed units of 1/1200 inch.
struct Settings {
  int32_t LeftMarginOffset = 0;
  int32_t TopMarginOffset = 0;
  int32_t TopMarginOffsetHeron = 0;
  int32_t LeftMarginOffsetHeron = 0;
  int32_t LeftMarginOffsetHeronHighQuality = 0;
  int32_t ImageSharpeningLevel = 11;
  int32_t RunComp = 1;
  int32_t RunCompDiv = 3000;
  int32_t dwStatusFrequency = 50;  // logged only; the status thread has a fixed period
  int32_t FeedAdjust = -1900;
  int32_t OutputDest = 1;
};

// The job's settings: written by ReadSettings before any other thread exists, constant afterwards.
extern Settings settings;

// Reads every setting from the property list at `path`, a regular file or a link to one, into
// `settings`. A missing file, a missing key or a value that is no number leaves the default;
// nothing is reported. Main thread.
void ReadSettings(const char* path);

// Writes the settings to the log, but for OutputDest. Main thread.
void LogSettings();

// Reads one text as UTF-8 into `buffer` of `buffer_bytes` bytes, NUL included. True whenever the
// file could be parsed, whether or not the key was there; a missing key, another type, or a text
// that does not fit leaves the buffer alone. Main thread.
bool ReadStringSetting(const char* path, const char* key, char* buffer, size_t buffer_bytes);

// Puts a number under a key and writes the list back as XML. False when the file could not be read
// or parsed; whether the writing succeeded is not told. Main thread.
bool WriteNumberSetting(const char* path, const char* key, int32_t value);

}  // namespace zr7700

#endif  // ZR7700_BASE_SETTINGS_H_
