// Reading a small file whole.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_TEXT_FILE_H_
#define ZR7700_VIRTUAL_PRINTER_TEXT_FILE_H_

#include <string>

namespace zr7700::printer {

// Reads the regular file at `path` into `text`. False, with one sentence in `error`, when it cannot
// be opened or read, is no regular file, or is longer than `most_bytes`. Any thread.
bool ReadTextFile(const std::string& path, size_t most_bytes, std::string& text,
                  std::string& error);

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_TEXT_FILE_H_
