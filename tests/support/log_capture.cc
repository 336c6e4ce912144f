// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/log_capture.h"

#include <cctype>
#include <string_view>

#include "base/log.h"

namespace zr7700::test {
namespace {

// "2026-11-21 12:59:06 +0000", a blank, then the message; '0' stands for any digit, '+' for a sign.
std::string WithoutDate(const std::string& line) {
  constexpr std::string_view kShape = "0000-00-00 00:00:00 +0000 ";
  bool dated = line.size() >= kShape.size();
  for (size_t i = 0; dated && i < kShape.size(); ++i) {
    const char c = line[i];
    if (kShape[i] == '0') {
      dated = isdigit(static_cast<unsigned char>(c)) != 0;
    } else {
      dated = c == kShape[i] || (kShape[i] == '+' && c == '-');
    }
  }
  return dated ? line.substr(kShape.size()) : "NO DATE: " + line;
}

}  // namespace

LogCapture::LogCapture(int threshold) { LogOpen(path().c_str(), threshold); }

std::vector<std::string> LogCapture::Lines() const {
  const std::string text = ReadFile(path());
  std::vector<std::string> lines;
  for (size_t start = 0; start < text.size();) {
    const size_t end = text.find("\r\n", start);
    if (end == std::string::npos) {
      lines.push_back("NO LINE END: " + text.substr(start));
      break;
    }
    lines.push_back(WithoutDate(text.substr(start, end - start)));
    start = end + 2;
  }
  return lines;
}

void LogCapture::Clear() { std::filesystem::remove(path()); }

}  // namespace zr7700::test
