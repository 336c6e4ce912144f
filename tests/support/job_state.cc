// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/job_state.h"

#include "base/settings.h"
#include "engine/clip_buffers.h"
#include "engine/engine_entries.h"
#include "engine/job_variables.h"

namespace zr7700::test {

void ResetJobState() {
  if (job_variables.clipDataBufs != nullptr) ClipDataBufsDelete(job_variables);
  job_variables = JobVariables{};
  engineHandle = nullptr;
  engine_entries = EngineEntryTable{};
  settings = Settings{};
}

}  // namespace zr7700::test
