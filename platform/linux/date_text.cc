// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/date_format.h"
#include "platform/platform.h"

namespace zr7700::platform {

std::string DateText() { return FormatLocalTime(time(nullptr)); }

}  // namespace zr7700::platform
