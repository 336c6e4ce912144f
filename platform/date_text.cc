// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <ctime>

#include "platform/platform.h"

namespace zr7700::platform {

// The same calls everywhere: a date object of Foundation's would be made on the heap, and its own
// description is in UTC on some systems.
void DateText(char (&text)[kDateTextBytes]) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local{};
  if (localtime_r(&now.tv_sec, &local) == nullptr ||
      strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S %z", &local) == 0) {
    snprintf(text, sizeof text, "1970-01-01 00:00:00 +0000");
  }
}

}  // namespace zr7700::platform
