#include "status/job_cancel.h"

#include <cstdlib>

#include "status/cancel_signal.h"
#include "status/status_memory.h"
#include "status/status_thread.h"

namespace zr7700 {

void InstallJobCancel() {
  InstallCancelHandler();
  atexit([] { JobCancelled(); });
}

bool JobCancelled() {
  static bool cancelled = false;
  if (!cancelled && CancelRequested()) {
    StopStatusThread();
    CloseStatusMemory();
    cancelled = true;
  }
  return cancelled;
}

void WaitForOutput(int descriptor) {
  while (!JobCancelled()) {
    if (WaitForRoom(descriptor)) return;
  }
}

}  // namespace zr7700
