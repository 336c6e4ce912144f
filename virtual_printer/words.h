// Splitting lines of text into words.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_WORDS_H_
#define ZR7700_VIRTUAL_PRINTER_WORDS_H_

#include <algorithm>
#include <string_view>
#include <vector>

namespace zr7700::printer {

// The words of `line`, parted by blanks, tabs and carriage returns. They point into `line`.
inline std::vector<std::string_view> SplitWords(std::string_view line) {
  constexpr std::string_view kBlanks = " \t\r\n";
  std::vector<std::string_view> words;
  for (size_t at = line.find_first_not_of(kBlanks); at != line.npos;) {
    const size_t end = std::min(line.find_first_of(kBlanks, at), line.size());
    words.push_back(line.substr(at, end - at));
    at = line.find_first_not_of(kBlanks, end);
  }
  return words;
}

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_WORDS_H_
