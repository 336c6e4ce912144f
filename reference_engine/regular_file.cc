// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace zr7700::reference_engine {
namespace {

class Descriptor {
 public:
  explicit Descriptor(const std::string& path)
      : number_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

// Reads to the end of the file, which may have grown since its length was asked.
bool ReadToEnd(int descriptor, size_t max_bytes, std::string* bytes) {
  size_t length_bytes = 0;
  while (true) {
    const ssize_t taken =
        read(descriptor, bytes->data() + length_bytes, bytes->size() - length_bytes);
    if (taken < 0 && errno == EINTR) continue;
    if (taken <= 0) {
      bytes->resize(length_bytes);
      return taken == 0;
    }
    length_bytes += static_cast<size_t>(taken);
    if (length_bytes > max_bytes) return false;
    if (length_bytes == bytes->size()) bytes->resize(std::min(2 * length_bytes, max_bytes + 1));
  }
}

}  // namespace

FileReading ReadRegularFile(const std::string& path, size_t max_bytes, std::string* bytes) {
  const Descriptor file(path);
  if (file.number() < 0)
    return errno == ENOENT || errno == ENOTDIR ? FileReading::kMissing : FileReading::kRefused;
  struct stat status;
  if (fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode)) return FileReading::kRefused;
  // One byte more than it has, to meet the end.
  bytes->resize(std::min(static_cast<size_t>(status.st_size), max_bytes) + 1);
  return ReadToEnd(file.number(), max_bytes, bytes) ? FileReading::kRead : FileReading::kRefused;
}

}  // namespace zr7700::reference_engine
