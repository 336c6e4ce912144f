// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <ctime>

#include "platform/platform.h"

namespace zr7700::platform {

// The system's monotonic clock is the same call everywhere; Foundation's own uptime is no help, as
// one of its implementations always answers 0.
double Now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

}  // namespace zr7700::platform
