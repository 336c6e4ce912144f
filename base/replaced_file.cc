// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/replaced_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace zr7700 {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  int number() const { return number_; }

 private:
  int number_;
};

bool WriteWhole(int file, std::string_view bytes) {
  size_t done_bytes = 0;
  while (done_bytes < bytes.size()) {
    const ssize_t put_bytes = write(file, bytes.data() + done_bytes, bytes.size() - done_bytes);
    if (put_bytes < 0 && errno == EINTR) continue;
    if (put_bytes <= 0) return false;
    done_bytes += static_cast<size_t>(put_bytes);
  }
  return fsync(file) == 0;
}

// Giving the file away is the administrator's right alone: a refusal is no failure. The mode comes
// last, since a change of owner may drop bits of it.
bool TakeOver(int file, const struct stat& old_facts) {
  if (fchown(file, old_facts.st_uid, old_facts.st_gid) != 0 && errno != EPERM) return false;
  return fchmod(file, old_facts.st_mode & 07777) == 0;
}

// The path with every symbolic link followed; empty when there is no such file.
std::string TargetOf(const char* path) {
  char* const resolved = realpath(path, nullptr);
  std::string target = resolved == nullptr ? "" : resolved;
  free(resolved);
  return target;
}

}  // namespace

bool ReplaceFile(const char* path, std::string_view bytes) {
  const std::string target = TargetOf(path);
  struct stat old_facts {};
  if (target.empty() || stat(target.c_str(), &old_facts) != 0) return false;
  std::string new_path = target + ".XXXXXX";
  const Descriptor file(mkostemp(new_path.data(), O_CLOEXEC));
  if (file.number() < 0) return false;
  if (WriteWhole(file.number(), bytes) && TakeOver(file.number(), old_facts) &&
      rename(new_path.c_str(), target.c_str()) == 0) {
    return true;
  }
  unlink(new_path.c_str());
  return false;
}

}  // namespace zr7700
