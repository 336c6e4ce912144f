// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/trusted_links.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace zr7700 {
namespace {

constexpr int kMostLinks = 16;
constexpr int kSafeOpen = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

// The link itself is opened, so that owner and text are those of one and the same link.
#ifdef __APPLE__
constexpr int kOpenLinkItself = O_RDONLY | O_SYMLINK | O_CLOEXEC;
ssize_t ReadOpenLink(int link, char* text, size_t bytes) { return freadlink(link, text, bytes); }
#else
constexpr int kOpenLinkItself = O_PATH | O_NOFOLLOW | O_CLOEXEC;
ssize_t ReadOpenLink(int link, char* text, size_t bytes) {
  return readlinkat(link, "", text, bytes);
}
#endif

enum class Step { kFollowed, kNoLink, kRefused };

Step Refuse(int reason) {
  errno = reason;
  return Step::kRefused;
}

// Puts a link's text in the place of the link: behind the path's folder, or instead of all of it.
Step Replace(PathText& path, const char* link_text, size_t bytes) {
  char* const slash = link_text[0] == '/' ? nullptr : strrchr(path.text, '/');
  char* const place = slash == nullptr ? path.text : slash + 1;
  if (place + bytes >= path.text + sizeof path.text) return Refuse(ENAMETOOLONG);
  memcpy(place, link_text, bytes);
  place[bytes] = '\0';
  return Step::kFollowed;
}

Step FollowOpenLink(int link, PathText& path) {
  struct stat info;
  if (fstat(link, &info) != 0 || !S_ISLNK(info.st_mode)) return Step::kNoLink;
  if (info.st_uid != 0 && info.st_uid != geteuid()) return Refuse(ELOOP);
  char text[PATH_MAX];
  const ssize_t bytes = ReadOpenLink(link, text, sizeof text);
  return bytes > 0 ? Replace(path, text, static_cast<size_t>(bytes)) : Step::kRefused;
}

// What cannot be opened here is left to whoever opens the path in earnest.
Step FollowOnce(PathText& path) {
  const int link = open(path.text, kOpenLinkItself);
  if (link < 0) return Step::kNoLink;
  const Step step = FollowOpenLink(link, path);
  const int kept_errno = errno;
  close(link);
  errno = kept_errno;
  return step;
}

}  // namespace

bool FollowTrustedLinks(const char* path, PathText& target) {
  const size_t bytes = path != nullptr ? strlen(path) + 1 : 0;
  if (bytes <= 1 || bytes > sizeof target.text) {
    errno = bytes <= 1 ? ENOENT : ENAMETOOLONG;
    return false;
  }
  memcpy(target.text, path, bytes);
  for (int links = 0; links <= kMostLinks; ++links) {
    const Step step = FollowOnce(target);
    if (step != Step::kFollowed) return step == Step::kNoLink;
  }
  errno = ELOOP;
  return false;
}

int OpenThroughTrustedLinks(const char* path, int flags, mode_t mode) {
  const int descriptor = open(path, flags | kSafeOpen, mode);
  if (descriptor >= 0 || errno != ELOOP) return descriptor;
  PathText target;
  return FollowTrustedLinks(path, target) ? open(target.text, flags | kSafeOpen, mode) : -1;
}

}  // namespace zr7700
