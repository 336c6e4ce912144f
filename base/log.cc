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
#include <ctime>

#include "base/trusted_links.h"
#include "platform/platform.h"

namespace zr7700 {
namespace {

constexpr size_t kPathBytes = 256;
constexpr size_t kMessageBytes = 900;
constexpr int32_t kRestartBytes = 3'000'000;

// Written by LogOpen before the status thread exists, constant afterwards.
struct LogState {
  int threshold = 3;
  char path[kPathBytes] = "";
  bool enabled = false;
};
LogState state;

// A file that has a second name may be anything of its owner's, put here by whoever can write to
// the folder.
bool MayBeLog(const struct stat& info) {
  return S_ISREG(info.st_mode) && (info.st_nlink <= 1 || info.st_uid == geteuid());
}

// Nothing else is changed, so that a line needs no heap.
void WriteToLog(int descriptor, const char* line, size_t bytes) {
  struct stat info;
  if (fstat(descriptor, &info) != 0 || !MayBeLog(info)) return;
  // The limit is compared with the size as a 32-bit number.
  if (static_cast<int32_t>(info.st_size) >= kRestartBytes) {
    [[maybe_unused]] const int emptied = ftruncate(descriptor, 0);
  }
  [[maybe_unused]] const ssize_t written = write(descriptor, line, bytes);
}

void WriteLine(const char* line, size_t bytes) {
  const int descriptor = OpenThroughTrustedLinks(state.path, O_WRONLY | O_CREAT | O_APPEND, 0777);
  if (descriptor < 0) return;
  WriteToLog(descriptor, line, bytes);
  close(descriptor);
}

void MakeReadable(int descriptor) {
  constexpr mode_t kReadable = S_IRGRP | S_IROTH;
  struct stat info;
  if (fstat(descriptor, &info) != 0 || !MayBeLog(info)) return;
  if ((info.st_mode & kReadable) == kReadable) return;
  fchmod(descriptor, (info.st_mode & 07777) | kReadable);
}

}  // namespace

void LogFixPermissions(const char* path) {
  int descriptor = OpenThroughTrustedLinks(path, O_WRONLY);
  if (descriptor < 0) descriptor = OpenThroughTrustedLinks(path, O_RDONLY);
  if (descriptor < 0) return;
  MakeReadable(descriptor);
  close(descriptor);
}

void LogOpen(const char* path, int threshold) {
  state.threshold = threshold;
  tzset();  // reads the time zone, for which lines would need the heap
  if (strlen(path) >= kPathBytes) return;
  snprintf(state.path, sizeof state.path, "%s", path);
  LogFixPermissions(state.path);
  state.enabled = true;
}

void LogMessage(int level, const char* format, ...) {
  if (level > state.threshold || !state.enabled) return;
  const int saved_errno = errno;
  char line[platform::kDateTextBytes + 1 + kMessageBytes + 2];
  char date[platform::kDateTextBytes];
  platform::DateText(date);
  char* end = stpcpy(stpcpy(line, date), " ");
  va_list arguments;
  va_start(arguments, format);
  const int length = vsnprintf(end, kMessageBytes, format, arguments);
  va_end(arguments);
  // A character argument of 0 ends the message early: the line end comes behind a C string.
  end = stpcpy(end + strlen(end), "\r\n");
  if (length >= 0) WriteLine(line, static_cast<size_t>(end - line));
  errno = saved_errno;
}

}  // namespace zr7700
