// The one way in which a moment is written, whatever clock told it.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PLATFORM_DATE_FORMAT_H_
#define ZR7700_PLATFORM_DATE_FORMAT_H_

#include <ctime>
#include <string>

namespace zr7700::platform {

// `moment` (seconds since 1970, UTC) as "YYYY-MM-DD HH:MM:SS +ZZZZ" in local time. A moment whose
// year the C library cannot hold is written as the beginning of 1970 in UTC. Any thread.
std::string FormatLocalTime(time_t moment);

}  // namespace zr7700::platform

#endif  // ZR7700_PLATFORM_DATE_FORMAT_H_
