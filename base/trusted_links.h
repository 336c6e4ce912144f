// Symbolic links in the place of a fixed path: those that root or the process's own user made are
// followed, any other is not, as the folder may be writable by others.
//
// Without state and without the heap. Any thread.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_TRUSTED_LINKS_H_
#define ZR7700_BASE_TRUSTED_LINKS_H_

#include <sys/types.h>

#include <climits>

namespace zr7700 {

// A path with its NUL.
struct PathText {
  char text[PATH_MAX];
};

// Sets `target` to the path to which `path` leads: `path` itself where no link is in its place,
// whether or not anything else is. Folders on the way may be links of anybody's. False, with errno
// ELOOP, for a link of another user or a long chain; with another errno for what the system
// refuses.
bool FollowTrustedLinks(const char* path, PathText& target);

// open() on what the path leads to; it never waits for the other side of a FIFO, and the descriptor
// is closed in programs that are started. -1, with errno as above, for a link that is not followed.
int OpenThroughTrustedLinks(const char* path, int flags, mode_t mode = 0);

}  // namespace zr7700

#endif  // ZR7700_BASE_TRUSTED_LINKS_H_
