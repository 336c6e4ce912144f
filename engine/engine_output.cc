#include "engine/engine_output.h"

#include <cstdio>

#include "engine/feed_command.h"
#include "engine/job_variables.h"

namespace zr7700 {

void WriteEngineOutput(void* context, uint8_t* data, uint32_t length_bytes) {
  if (data == nullptr) return;
  if (context != nullptr) {
    AdjustFirstFeed(*static_cast<JobVariables*>(context), {data, length_bytes});
  }
  [[maybe_unused]] const size_t written = fwrite(data, 1, length_bytes, stdout);
}

}  // namespace zr7700
