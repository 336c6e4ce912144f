// The published status as another process sees it, under the build's own name.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_TEST_MEMORY_H_
#define ZR7700_STATUS_TEST_MEMORY_H_

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <string>

#include "base/paths.h"

namespace zr7700::test {

// One at a time on the machine: tests that use the name take turns. The name is free at first and
// at the end.
class MemoryName {
 public:
  MemoryName()
      : lock_(open((std::string("/tmp") + paths::kStatusMemory + ".lock").c_str(),
                   O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    flock(lock_, LOCK_EX);
    shm_unlink(paths::kStatusMemory);
  }
  ~MemoryName() {
    shm_unlink(paths::kStatusMemory);
    close(lock_);
  }
  MemoryName(const MemoryName&) = delete;
  MemoryName& operator=(const MemoryName&) = delete;

 private:
  int lock_;
};

// The object's state and up to 512 bytes of its content; nothing when there is no object.
struct Published {
  struct stat info;
  std::string content;
};

inline std::optional<Published> LookAtMemory() {
  const int descriptor = shm_open(paths::kStatusMemory, O_RDONLY, 0);
  if (descriptor < 0) return std::nullopt;
  Published published = {};
  fstat(descriptor, &published.info);
  std::array<char, 512> bytes;
  const ssize_t count = read(descriptor, bytes.data(), bytes.size());
  if (count > 0) published.content.assign(bytes.data(), static_cast<size_t>(count));
  close(descriptor);
  return published;
}

}  // namespace zr7700::test

#endif  // ZR7700_STATUS_TEST_MEMORY_H_
