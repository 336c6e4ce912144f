// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/platform.h"

namespace zr7700 {
namespace {

constexpr size_t kPathBytes = 256;
constexpr size_t kMessageBytes = 900;
constexpr int32_t kRestartBytes = 3'000'000;

// Neither a link nor a FIFO planted in the log's place may redirect or hold up the job.
constexpr int kSafeOpen = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

// Written by LogOpen before the status thread exists, constant afterwards.
struct LogState {
  int threshold = 3;
  char path[kPathBytes] = "";
  bool enabled = false;
};
LogState state;

// The size as the 32-bit number that the limit is compared with; 0 for a file that is not there.
int32_t SizeOf(const char* path) {
  struct stat info;
  return stat(path, &info) == 0 ? static_cast<int32_t>(info.st_size) : 0;
}

bool IsRegularFile(int descriptor) {
  struct stat info;
  return fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode);
}

void WriteLine(const std::string& line) {
  const int disposition = SizeOf(state.path) >= kRestartBytes ? O_TRUNC : O_APPEND;
  const int descriptor = open(state.path, O_WRONLY | O_CREAT | disposition | kSafeOpen, 0777);
  if (descriptor < 0) return;
  if (IsRegularFile(descriptor)) {
    [[maybe_unused]] const ssize_t written = write(descriptor, line.data(), line.size());
  }
  close(descriptor);
}

}  // namespace

void LogFixPermissions(const char* path) {
  struct stat info;
  if (lstat(path, &info) != 0 || !S_ISREG(info.st_mode)) return;
  constexpr mode_t kReadable = S_IRGRP | S_IROTH;
  if ((info.st_mode & kReadable) == kReadable) return;
  const mode_t mode = (info.st_mode & 07777) | kReadable;
  if (fchmodat(AT_FDCWD, path, mode, AT_SYMLINK_NOFOLLOW) == 0) return;
  // The C library may need /proc for that.
  const int descriptor = open(path, O_WRONLY | kSafeOpen);
  if (descriptor < 0) return;
  if (IsRegularFile(descriptor)) fchmod(descriptor, mode);
  close(descriptor);
}

void LogOpen(const char* path, int threshold) {
  state.threshold = threshold;
  if (strlen(path) >= kPathBytes) return;
  snprintf(state.path, sizeof state.path, "%s", path);
  LogFixPermissions(state.path);
  state.enabled = true;
}

void LogMessage(int level, const char* format, ...) {
  if (level > state.threshold || !state.enabled) return;
  const int saved_errno = errno;
  char message[kMessageBytes];
  va_list arguments;
  va_start(arguments, format);
  const int length = vsnprintf(message, sizeof message, format, arguments);
  va_end(arguments);
  // A character argument of 0 ends the message early: it is appended as a C string.
  if (length >= 0) WriteLine(platform::DateText() + " " + message + "\r\n");
  errno = saved_errno;
}

}  // namespace zr7700
