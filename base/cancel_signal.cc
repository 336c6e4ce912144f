// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/cancel_signal.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace zr7700 {
namespace {

// Written by the signal handler.
std::atomic<bool> requested = false;
static_assert(std::atomic<bool>::is_always_lock_free);

// Constant once the handler is installed; the read end stays readable after a cancel. Poll passes
// over a negative descriptor.
int wake_read = -1;
int wake_write = -1;

extern "C" void HandleTerminate(int) {
  const int saved_errno = errno;
  requested.store(true);
  const char wake = 0;
  [[maybe_unused]] const ssize_t written = write(wake_write, &wake, 1);
  errno = saved_errno;
}

void OpenWakePipe() {
  int ends[2];
  if (pipe(ends) != 0) return;
  for (const int end : ends) {
    fcntl(end, F_SETFL, O_NONBLOCK);
    fcntl(end, F_SETFD, FD_CLOEXEC);
  }
  wake_read = ends[0];
  wake_write = ends[1];
}

sigset_t TerminateSet() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGTERM);
  return set;
}

// Waits for `events` of the descriptor; false when a cancel came first.
bool WaitFor(int descriptor, short events) {
  pollfd watched[] = {{descriptor, events, 0}, {wake_read, POLLIN, 0}};
  while (!requested.load()) {
    if (poll(watched, 2, -1) < 0 && errno != EINTR && errno != EAGAIN) return true;
    if (watched[0].revents != 0 && !requested.load()) return true;
  }
  return false;
}

}  // namespace

void InstallCancelHandler() {
  OpenWakePipe();
  signal(SIGTERM, HandleTerminate);
}

bool CancelRequested() { return requested.load(); }

bool WaitForInput(int descriptor) { return WaitFor(descriptor, POLLIN); }

bool WaitForRoom(int descriptor) { return WaitFor(descriptor, POLLOUT); }

CancelBlock::CancelBlock() {
  const sigset_t terminate = TerminateSet();
  pthread_sigmask(SIG_BLOCK, &terminate, &old_mask_);
}

CancelBlock::~CancelBlock() { pthread_sigmask(SIG_SETMASK, &old_mask_, nullptr); }

}  // namespace zr7700
