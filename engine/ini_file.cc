// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/ini_file.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/log.h"
#include "base/regular_file.h"
#include "base/replaced_file.h"
#include "engine/fatal_limit.h"
#include "engine/job_variables.h"

namespace zr7700 {
namespace {

constexpr size_t kLineBytes = 1023;
constexpr size_t kFileBytes = 8000;
constexpr char kFileLimit[] = "8000 bytes in a file";
constexpr size_t kKeyLineBytes = 500;
constexpr size_t kHeaderBytes = 100;
// The most that is held in memory; such a file is taken as over its limit unseen.
constexpr size_t kMostBytes = (size_t{1} << 20) - 1;

bool Contains(std::string_view line, std::string_view text) {
  return line.find(text) != std::string_view::npos;
}

bool IsHeader(std::string_view line) { return line.starts_with('['); }

// The text's lines, line ends included, long ones in pieces.
std::vector<std::string_view> Lines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const size_t line_end = text.find('\n');
    const size_t length = std::min(
        {line_end == std::string_view::npos ? text.size() : line_end + 1, kLineBytes, text.size()});
    lines.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return lines;
}

// A new text under construction, held to the limits.
class NewText {
 public:
  explicit NewText(const char* path) : path_(path) {}

  void Append(std::string_view piece) {
    text_ += piece;
    if (text_.size() >= kFileBytes) EndProcessAtLimit(kFileLimit, path_);
  }

  void AppendHeader(std::string_view line) {
    if (line.size() >= kHeaderBytes) EndProcessAtLimit("100 bytes in a section header", path_);
    Append(line);
  }

  void AppendKey(const char* before, const char* key, const char* value) {
    const std::string line = std::string(before) + key + value + " \n";
    if (line.size() >= kKeyLineBytes) EndProcessAtLimit("500 bytes in a key line", path_);
    Append(line);
  }

  const std::string& text() const { return text_; }

 private:
  const char* path_;
  std::string text_;
};

bool ReportFailure() {
  LogMessage(kLogDetail, "Unable to open ferro ini file for writing");
  LogMessage(kLogDetail, "WriteFerroIniFile failed");
  return false;
}

// What a file holds; without a text there is none that may be read.
struct OldFile {
  FileReading reading;
  std::string text;
};

OldFile ReadOldFile(const char* path) {
  OldFile old_file;
  old_file.reading = ReadRegularFile(path, Links::kTrusted, kMostBytes, old_file.text);
  if (old_file.reading == FileReading::kTooLong) EndProcessAtLimit(kFileLimit, path);
  return old_file;
}

// A write that would change nothing is left out: other programs need not read the file again.
bool Rewrite(const char* path, std::string_view old_text, std::string_view text) {
  return text == old_text || ReplaceFile(path, text) || ReportFailure();
}

// A file of these two lines, in the place of none or of one that may only be written.
bool WriteFirstKey(const char* path, FileReading reading, const char* section, const char* key,
                   const char* value) {
  LogMessage(kLogDetail, "ferro ini file not present trying to create");
  NewText text(path);
  text.Append(section);
  text.AppendKey("\n", key, value);
  const bool is_missing = reading == FileReading::kMissing;
  return (is_missing ? CreateFile(path, text.text()) : ReplaceFile(path, text.text())) ||
         ReportFailure();
}

// The file's text with the key set.
NewText WithKey(const char* path, std::string_view old_text, const char* section, const char* key,
                const char* value) {
  NewText text(path);
  bool written = false;
  bool in_section = false;
  for (const std::string_view line : Lines(old_text)) {
    if (Contains(line, key)) {
      text.AppendKey("", key, value);
      written = true;
    } else if (!IsHeader(line)) {
      text.Append(line);
    } else {
      if (in_section && !written) {
        text.AppendKey("", key, value);
        written = true;
      }
      text.AppendHeader(line);
      in_section = Contains(line, section);
    }
  }
  if (!written) {
    if (!in_section) text.Append(section);
    text.AppendKey("\n", key, value);
  }
  return text;
}

// The file's text without the key's lines in the section; nothing when there are none.
std::optional<std::string> WithoutKey(const char* path, std::string_view old_text,
                                      const char* section, const char* key) {
  NewText text(path);
  bool removed = false;
  bool in_section = false;
  for (const std::string_view line : Lines(old_text)) {
    if (in_section && Contains(line, key)) {
      removed = true;
    } else if (IsHeader(line)) {
      text.AppendHeader(line);
      in_section = Contains(line, section);
    } else {
      text.Append(line);
    }
  }
  if (!removed) return std::nullopt;
  return text.text();
}

}  // namespace

bool WriteFerroIniFile(const char* section, const char* key, const char* value) {
  const char* const path = job_variables.files.engineIniPath;
  const OldFile old_file = ReadOldFile(path);
  switch (old_file.reading) {
    case FileReading::kMissing:
    case FileReading::kRefused:
      return WriteFirstKey(path, old_file.reading, section, key, value);
    case FileReading::kTooLong:
    case FileReading::kFailed:
      return ReportFailure();
    case FileReading::kRead:
      break;
  }
  return Rewrite(path, old_file.text, WithKey(path, old_file.text, section, key, value).text());
}

bool RemoveFerroIniKey(const char* section, const char* key) {
  const char* const path = job_variables.files.engineIniPath;
  const OldFile old_file = ReadOldFile(path);
  if (old_file.reading != FileReading::kRead) return ReportFailure();
  const std::optional<std::string> text = WithoutKey(path, old_file.text, section, key);
  return !text || Rewrite(path, old_file.text, *text);
}

}  // namespace zr7700
