// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/date_format.h"

namespace zr7700::platform {

std::string FormatLocalTime(time_t moment) {
  tm local{};
  char text[64];
  if (localtime_r(&moment, &local) == nullptr) return "1970-01-01 00:00:00 +0000";
  const size_t length = strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S %z", &local);
  return std::string(text, length);
}

}  // namespace zr7700::platform
