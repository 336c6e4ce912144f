// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace zr7700::printer {
namespace {

bool ReadAll(int file, size_t most_bytes, std::string& text) {
  char block[65536];
  for (;;) {
    const ssize_t count = read(file, block, sizeof block);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return count == 0;
    text.append(block, static_cast<size_t>(count));
    if (text.size() > most_bytes) {
      errno = EFBIG;
      return false;
    }
  }
}

}  // namespace

bool ReadTextFile(const std::string& path, size_t most_bytes, std::string& text,
                  std::string& error) {
  // Non-blocking, so that a FIFO is refused below instead of waited for.
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  struct stat facts {};
  bool read = file >= 0 && fstat(file, &facts) == 0;
  if (read && !S_ISREG(facts.st_mode)) {
    errno = EINVAL;
    read = false;
  }
  text.clear();
  read = read && ReadAll(file, most_bytes, text);
  if (!read) error = "The file " + path + " cannot be read: " + std::strerror(errno) + ".";
  if (file >= 0) close(file);
  return read;
}

}  // namespace zr7700::printer
