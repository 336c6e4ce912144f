// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "base/trusted_links.h"

namespace zr7700 {
namespace {

// An open descriptor of a regular file, or -1 with errno telling why. Closed when it goes out of
// scope.
class RegularFile {
 public:
  RegularFile(const char* path, Links links)
      : descriptor_(links == Links::kTrusted
                        ? OpenThroughTrustedLinks(path, O_RDONLY)
                        : open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {
    struct stat info;
    if (descriptor_ < 0) return;
    const int reason = fstat(descriptor_, &info) != 0 ? errno : S_ISREG(info.st_mode) ? 0 : EINVAL;
    if (reason == 0) return;
    close(descriptor_);
    descriptor_ = -1;
    errno = reason;
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

// Why a file could not be opened. A refusal that the file's rights do not bear out is a failure.
FileReading WithoutFile(const char* path) {
  switch (errno) {
    case ENOENT:
    case ENOTDIR:
      return FileReading::kMissing;
    case EACCES:
    case EPERM:
      return faccessat(AT_FDCWD, path, R_OK, AT_EACCESS) != 0 ? FileReading::kRefused
                                                              : FileReading::kFailed;
    case EINVAL:
    case EISDIR:
    case ELOOP:
    case ENXIO:
      return FileReading::kRefused;
    default:
      return FileReading::kFailed;
  }
}

}  // namespace

FileReading ReadRegularFile(const char* path, Links links, size_t limit_bytes, std::string& bytes) {
  bytes.clear();
  if (path == nullptr) return FileReading::kMissing;
  const RegularFile file(path, links);
  return file.IsOpen() ? ReadToEnd(file.descriptor(), limit_bytes, bytes) : WithoutFile(path);
}

}  // namespace zr7700
