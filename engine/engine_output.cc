// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/engine_output.h"

#include <unistd.h>

#include <algorithm>
#include <span>

#include "base/printer_output.h"
#include "engine/feed_command.h"
#include "engine/job_variables.h"

namespace zr7700 {

namespace {

// Small enough for a pipe that says it is ready to take it.
constexpr size_t kPieceBytes = 2048;

// Main thread only.
OutputWait wait_for_output = nullptr;

void Wait() {
  if (wait_for_output != nullptr) wait_for_output(STDOUT_FILENO);
}

}  // namespace

void SetOutputWait(OutputWait wait) { wait_for_output = wait; }

void FlushEngineOutput() {
  if (HasBufferedOutput()) Wait();
  FlushPrinterOutput();
}

void WriteEngineOutput(void* context, uint8_t* data, uint32_t length_bytes) noexcept {
  if (data == nullptr) return;
  if (context != nullptr) {
    AdjustFirstFeed(static_cast<JobVariables*>(context)->FeedAdjust, {data, length_bytes});
  }
  for (std::span<const uint8_t> rest(data, length_bytes); !rest.empty();) {
    const std::span<const uint8_t> piece = rest.first(std::min(rest.size(), kPieceBytes));
    if (!FitsOutputBuffer(piece.size())) Wait();
    WritePrinterOutput(piece);
    rest = rest.subspan(piece.size());
  }
}

}  // namespace zr7700
