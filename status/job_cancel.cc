// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/job_cancel.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "base/cancel_signal.h"
#include "base/log.h"
#include "status/status_memory.h"
#include "status/status_thread.h"

namespace zr7700 {
namespace {

// As long as the job waits for an idle printer at its end: a printer that loads a disc takes
// nothing for a while, and after some 30 seconds CUPS kills the job.
constexpr int kStallLimit_ms = 20'000;

// Waits until the descriptor takes output; false when it has taken nothing for the limit.
bool WaitForReader(int descriptor) {
  pollfd watched = {descriptor, POLLOUT, 0};
  int ready;
  do {
    ready = poll(&watched, 1, kStallLimit_ms);
  } while (ready < 0 && errno == EINTR);
  return ready != 0;
}

// What is written to the descriptor from now on is lost, and its reader sees the end.
void DiscardOutput(int descriptor) {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere < 0) return;
  dup2(nowhere, descriptor);
  close(nowhere);
  LogMessage(kLogDetail, "     Nothing taken for 20 s after the cancel: output discarded");
}

}  // namespace

void InstallJobCancel() {
  InstallCancelHandler();
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

void WaitForOutput(int descriptor) {
  while (!TakeCancel()) {
    if (WaitForRoom(descriptor)) return;
  }
  if (!WaitForReader(descriptor)) DiscardOutput(descriptor);
}

}  // namespace zr7700
