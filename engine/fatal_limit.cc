// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/fatal_limit.h"

#include <cstdio>
#include <cstdlib>

#include "base/log.h"
#include "engine/job_variables.h"

namespace zr7700 {

void EndProcessAtLimit(const char* limit, const char* file) {
  // The page line of a page that is being started has no line end of its own, and CUPS acts on
  // whole lines only.
  if (job_variables.feedPending != 0) fputc('\n', stderr);
  LogMessage(kLogDetail, "Limit of %s exceeded: %s", limit, file);
  fprintf(stderr, "ERROR: The print engine's settings are too long (limit of %s): %s\n", limit,
          file);
  exit(EXIT_FAILURE);
}

}  // namespace zr7700
