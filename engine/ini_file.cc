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
  LogMessage(kLogDetail, "WriteFerroIniFile failed");
  return false;
}

bool Rewrite(const char* path, const std::string& text) {
  if (WriteRegularFile(path, text)) return true;
  LogMessage(kLogDetail, "Unable to open ferro ini file for writing");
  return ReportFailure();
}

// The file's old text, as far as it can be read; nothing when it cannot be opened.
std::optional<std::string> ReadOldText(const char* path) {
  std::string text;
  switch (ReadRegularFile(path, Links::kRefused, kMostBytes, text)) {
    case FileReading::kMissing:
    case FileReading::kRefused:
      return std::nullopt;
    case FileReading::kTooLong:
      EndProcessAtLimit(kFileLimit, path);
    case FileReading::kRead:
    case FileReading::kFailed:
      break;
  }
  return text;
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
  const std::optional<std::string> old_text = ReadOldText(path);
  if (!old_text) {
    LogMessage(kLogDetail, "ferro ini file not present trying to create");
    NewText text(path);
    text.Append(section);
    text.AppendKey("\n", key, value);
    return Rewrite(path, text.text());
  }
  return Rewrite(path, WithKey(path, *old_text, section, key, value).text());
}

bool RemoveFerroIniKey(const char* section, const char* key) {
  const char* const path = job_variables.files.engineIniPath;
  const std::optional<std::string> old_text = ReadOldText(path);
  if (!old_text) {
    LogMessage(kLogDetail, "Unable to open ferro ini file for writing");
    return ReportFailure();
  }
  const std::optional<std::string> text = WithoutKey(path, *old_text, section, key);
  return !text || Rewrite(path, *text);
}

}  // namespace zr7700
