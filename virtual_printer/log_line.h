// What may stand in one line of a log.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_LOG_LINE_H_
#define ZR7700_VIRTUAL_PRINTER_LOG_LINE_H_

#include <string>
#include <string_view>

namespace zr7700::printer {

// `text` as one line of at most 1,000 bytes: control characters, which would begin a new line and
// with it a new message, become question marks. Any thread.
inline std::string LogLine(std::string_view text) {
  std::string line(text.substr(0, 1000));
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
  }
  return line;
}

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_LOG_LINE_H_
