// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/user_message.h"

#include <unistd.h>

#include <string>

namespace zr7700 {
namespace {

constexpr size_t kMostBytes = 1900;

std::string Printable(std::string_view text) {
  std::string line(text.substr(0, kMostBytes));
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
  }
  return line;
}

void WriteLine(const std::string& line) {
  // Nobody is left to be told when this fails.
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace

void TellError(std::string_view sentence) { WriteLine("\nERROR: " + Printable(sentence) + "\n"); }

void TellWarning(std::string_view sentence) {
  WriteLine("\nWARNING: " + Printable(sentence) + "\n");
}

void TellPage(unsigned page, unsigned copies) {
  WriteLine("\nPAGE: " + std::to_string(page) + " " + std::to_string(copies) + "\n");
}

}  // namespace zr7700
