// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/library_trust.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace zr7700 {
namespace {

// Root's own group counts as others: where there is an access list, the group's rights stand for
// whoever is on it.
bool OthersMayWrite(const struct stat& info) { return (info.st_mode & (S_IWGRP | S_IWOTH)) != 0; }

enum class Folders {
  kClosed,  // nobody else may write
  kSticky,  // or only beside what is root's
};

bool IsRootsAlone(const char* path, Folders folders) {
  struct stat info;
  if (lstat(path, &info) != 0) return false;
  const bool is_sticky =
      folders == Folders::kSticky && S_ISDIR(info.st_mode) && (info.st_mode & S_ISVTX) != 0;
  if (info.st_uid == 0 && (is_sticky || !OthersMayWrite(info))) return true;
  errno = EPERM;
  return false;
}

// Cuts the last name off, down to "/"; false when nothing is left to cut.
bool GoUp(PathText& path) {
  char* const slash = strrchr(path.text, '/');
  if (slash == nullptr || path.text[1] == '\0') return false;
  slash[slash == path.text ? 1 : 0] = '\0';
  return true;
}

}  // namespace

bool BelongsToRootAlone(const char* path, PathText& real_path) {
  if (realpath(path, real_path.text) == nullptr) return false;
  PathText above = real_path;
  if (!IsRootsAlone(above.text, Folders::kClosed)) return false;
  if (!GoUp(above) || !IsRootsAlone(above.text, Folders::kClosed)) return false;
  while (GoUp(above)) {
    if (!IsRootsAlone(above.text, Folders::kSticky)) return false;
  }
  return true;
}

}  // namespace zr7700
