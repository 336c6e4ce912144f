// For tests: what a process of its own says.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PLATFORM_CHILD_TEXT_H_
#define ZR7700_PLATFORM_CHILD_TEXT_H_

#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace zr7700::platform {

// Calls `tell` in a forked child and returns the first 200 bytes of the text that it returns there.
// For what a process settles once, such as its time zone and its language. Main thread, and only
// while no other thread runs.
template <typename Tell>
std::string TextOfChild(const Tell& tell) {
  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  const pid_t child = fork();
  if (child == 0) {
    const std::string text = tell();
    _exit(write(ends[1], text.data(), text.size()) < 0 ? 1 : 0);
  }
  close(ends[1]);
  char text[200];
  const ssize_t length = read(ends[0], text, sizeof text);
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return std::string(text, length < 0 ? 0 : static_cast<size_t>(length));
}

}  // namespace zr7700::platform

#endif  // ZR7700_PLATFORM_CHILD_TEXT_H_
