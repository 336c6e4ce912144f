// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace zr7700 {
namespace {

// An open descriptor of a regular file, or -1 with errno telling why. Closed when it goes out of
// scope.
class RegularFile {
 public:
  RegularFile(const char* path, int flags)
      : descriptor_(open(path, flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666)) {
    struct stat info;
    if (descriptor_ < 0 || (fstat(descriptor_, &info) == 0 && S_ISREG(info.st_mode))) return;
    close(descriptor_);
    descriptor_ = -1;
    errno = EINVAL;
  }
  ~RegularFile() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  RegularFile(const RegularFile&) = delete;
  RegularFile& operator=(const RegularFile&) = delete;

  bool IsOpen() const { return descriptor_ >= 0; }
  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

// Reads to the end, or a byte beyond the limit.
FileReading ReadToEnd(int descriptor, size_t limit_bytes, std::string& bytes) {
  char piece[16384];
  while (bytes.size() <= limit_bytes) {
    const ssize_t count = read(descriptor, piece, sizeof piece);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return FileReading::kFailed;
    if (count == 0) return FileReading::kRead;
    bytes.append(piece, static_cast<size_t>(count));
  }
  bytes.resize(limit_bytes);
  return FileReading::kTooLong;
}

}  // namespace

FileReading ReadRegularFile(const char* path, Links links, size_t limit_bytes, std::string& bytes) {
  bytes.clear();
  if (path == nullptr) return FileReading::kMissing;
  const RegularFile file(path, O_RDONLY | (links == Links::kRefused ? O_NOFOLLOW : 0));
  if (file.IsOpen()) return ReadToEnd(file.descriptor(), limit_bytes, bytes);
  return errno == ENOENT || errno == ENOTDIR ? FileReading::kMissing : FileReading::kRefused;
}

bool WriteRegularFile(const char* path, std::string_view text) {
  if (path == nullptr) return false;
  const RegularFile file(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW);
  if (!file.IsOpen()) return false;
  [[maybe_unused]] const ssize_t written = write(file.descriptor(), text.data(), text.size());
  return true;
}

}  // namespace zr7700
