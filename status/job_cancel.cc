// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/job_cancel.h"

#include <cstdlib>

#include "base/cancel_signal.h"
#include "base/pause.h"
#include "status/status_memory.h"
#include "status/status_thread.h"

namespace zr7700 {

void InstallJobCancel() {
  InstallCancelHandler(UnlinkStatusMemory);
  atexit([] { TakeCancel(); });
}

bool TakeCancel() {
  static bool cancelled = false;
  if (!cancelled && CancelRequested()) {
    StopStatusThread();
    CloseStatusMemory();
    cancelled = true;
  }
  return cancelled;
}

bool PauseJob(int length_ms) {
  Pause(length_ms);
  return !TakeCancel();
}

void WaitForOutput(int descriptor) {
  while (!TakeCancel() && !WaitForRoom(descriptor)) {
  }
}

}  // namespace zr7700
