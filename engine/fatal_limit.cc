#include "engine/fatal_limit.h"

#include <cstdio>
#include <cstdlib>

#include "driver/log.h"

namespace zr7700 {

void EndProcessAtLimit(const char* limit, const char* file) {
  LogMessage(kLogDetail, "Limit of %s exceeded: %s", limit, file);
  fprintf(stderr, "ERROR: The print engine's settings are too long (limit of %s): %s\n", limit,
          file);
  exit(EXIT_FAILURE);
}

}  // namespace zr7700
