// The descriptors that a run leaves open.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_FUZZ_OPEN_DESCRIPTORS_H_
#define ZR7700_FUZZ_OPEN_DESCRIPTORS_H_

#include <poll.h>

#include <cstdint>

namespace zr7700::fuzz {

// The open ones of the first 32 descriptors, a bit each: the same before and after a run that
// leaves nothing open and closes nothing of others'.
inline uint32_t OpenDescriptors() {
  pollfd descriptors[32] = {};
  for (int i = 0; i < 32; ++i) descriptors[i].fd = i;
  poll(descriptors, 32, 0);
  uint32_t open = 0;
  for (int i = 0; i < 32; ++i) {
    if ((descriptors[i].revents & POLLNVAL) == 0) open |= uint32_t{1} << i;
  }
  return open;
}

}  // namespace zr7700::fuzz

#endif  // ZR7700_FUZZ_OPEN_DESCRIPTORS_H_
