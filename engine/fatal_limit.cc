// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/fatal_limit.h"

#include <cstdlib>

#include "base/log.h"
#include "base/standard_error.h"

namespace zr7700 {

void EndProcessAtLimit(const char* limit, const char* file) {
  // The text of the page that is being started has left its line open.
  EndLineToCups();
  LogMessage(kLogDetail, "Limit of %s exceeded: %s", limit, file);
  TellCups("ERROR: The print engine's settings are too long (limit of %s): %s\n", limit, file);
  exit(EXIT_FAILURE);
}

}  // namespace zr7700
