// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace zr7700 {
namespace {

// An open descriptor of a regular file, or -1. Closed when it goes out of scope.
class RegularFile {
 public:
  RegularFile(const char* path, int flags) {
    if (path == nullptr) return;
    descriptor_ = open(path, flags | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
    struct stat info;
    if (descriptor_ >= 0 && (fstat(descriptor_, &info) != 0 || !S_ISREG(info.st_mode))) Close();
  }
  ~RegularFile() { Close(); }
  RegularFile(const RegularFile&) = delete;
  RegularFile& operator=(const RegularFile&) = delete;

  bool IsOpen() const { return descriptor_ >= 0; }
  int descriptor() const { return descriptor_; }

 private:
  void Close() {
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
  }

  int descriptor_ = -1;
};

}  // namespace

std::optional<std::string> ReadRegularFile(const char* path, size_t limit_bytes) {
  const RegularFile file(path, O_RDONLY);
  if (!file.IsOpen()) return std::nullopt;
  std::string text;
  char piece[4096];
  while (text.size() < limit_bytes) {
    const size_t wanted = std::min(sizeof piece, limit_bytes - text.size());
    const ssize_t count = read(file.descriptor(), piece, wanted);
    if (count <= 0) break;
    text.append(piece, static_cast<size_t>(count));
  }
  return text;
}

bool WriteRegularFile(const char* path, std::string_view text) {
  const RegularFile file(path, O_WRONLY | O_CREAT | O_TRUNC);
  if (!file.IsOpen()) return false;
  [[maybe_unused]] const ssize_t written = write(file.descriptor(), text.data(), text.size());
  return true;
}

}  // namespace zr7700
