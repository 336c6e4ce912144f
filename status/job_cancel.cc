#include "status/job_cancel.h"

#include "status/cancel_signal.h"
#include "status/status_memory.h"
#include "status/status_thread.h"

namespace zr7700 {

bool JobCancelled() {
  static bool cancelled = false;
  if (!cancelled && CancelRequested()) {
    StopStatusThread();
    CloseStatusMemory();
    cancelled = true;
  }
  return cancelled;
}

}  // namespace zr7700
