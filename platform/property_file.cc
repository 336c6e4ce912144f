// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/property_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace zr7700::platform {
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

// The length of a regular file within the bound; nothing for any other.
std::optional<size_t> LengthBytes(int file) {
  struct stat facts {};
  if (fstat(file, &facts) != 0 || !S_ISREG(facts.st_mode)) return {};
  if (facts.st_size > static_cast<off_t>(kMaxPropertyFileBytes)) return {};
  return static_cast<size_t>(facts.st_size);
}

// One byte more is asked for than the file was long: one that is growing is not read.
bool ReadWhole(int file, size_t length_bytes, std::string& bytes) {
  bytes.resize(length_bytes + 1);
  size_t filled_bytes = 0;
  while (filled_bytes < bytes.size()) {
    const ssize_t got_bytes = read(file, &bytes[filled_bytes], bytes.size() - filled_bytes);
    if (got_bytes < 0 && errno == EINTR) continue;
    if (got_bytes < 0) return false;
    if (got_bytes == 0) break;
    filled_bytes += static_cast<size_t>(got_bytes);
  }
  bytes.resize(filled_bytes);
  return filled_bytes <= length_bytes;
}

bool WriteWhole(int file, const std::string& bytes) {
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

bool ReadPropertyFile(const char* path, std::string& bytes) {
  const Descriptor file(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (file.number() < 0) return false;
  const std::optional<size_t> length_bytes = LengthBytes(file.number());
  return length_bytes && ReadWhole(file.number(), *length_bytes, bytes);
}

bool ReplacePropertyFile(const char* path, const std::string& bytes) {
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

}  // namespace zr7700::platform
