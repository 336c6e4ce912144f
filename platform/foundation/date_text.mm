// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cmath>

#include "platform/date_format.h"
#include "platform/foundation/autorelease.h"
#include "platform/platform.h"

namespace zr7700::platform {

// A date's own description is in UTC on some systems and reads the time zone files on others, with
// complaints on standard error about a zone that it does not know: the C library does the writing.
std::string DateText() {
  return WithPool([] {
    const NSTimeInterval seconds = [[NSDate date] timeIntervalSince1970];
    return FormatLocalTime(static_cast<time_t>(std::floor(seconds)));
  });
}

}  // namespace zr7700::platform
