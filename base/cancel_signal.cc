// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/cancel_signal.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>

namespace zr7700 {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// The clock at the first SIGTERM; 0 before. Written by the signal handler.
std::atomic<int64_t> requested_at = 0;
static_assert(std::atomic<int64_t>::is_always_lock_free);

// Constant once the handler is installed; the read end stays readable after a cancel. Poll passes
// over a negative descriptor.
int wake_read = -1;
int wake_write = -1;
void (*call_at_once)() = nullptr;

extern "C" void HandleTerminate(int) {
  const int saved_errno = errno;
  int64_t never = 0;
  requested_at.compare_exchange_strong(never, Clock::now().time_since_epoch().count());
  const char wake = 0;
  [[maybe_unused]] const ssize_t written = write(wake_write, &wake, 1);
  if (call_at_once != nullptr) call_at_once();
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

// What is left until then of a wait of at most `most_ms`: rounded up, so that the last step is no
// busy loop.
int LeftUntil(Clock::time_point end, int most_ms) {
  const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
  return static_cast<int>(std::clamp<int64_t>(left, 0, most_ms));
}

enum class Heed { kCancel, kNothing };

constexpr int kWithoutLimit = -1;  // as poll takes it

// The one wait of the job, begun anew whenever a signal interrupts it. An error of the descriptor
// counts as ready: whoever uses it then meets that error. Without interruptions it does not go by
// the clock: a wait is never longer than its limit.
WaitEnd WaitFor(int descriptor, short events, int limit_ms, Heed heed) {
  pollfd watched[] = {{descriptor, events, 0}, {heed == Heed::kCancel ? wake_read : -1, POLLIN, 0}};
  const auto cancelled = [heed] { return heed == Heed::kCancel && CancelRequested(); };
  const Clock::time_point end = Clock::now() + milliseconds(limit_ms);
  while (!cancelled()) {
    const int ready = poll(watched, 2, limit_ms);
    if (cancelled()) break;
    if (ready < 0 && errno != EINTR && errno != EAGAIN) return WaitEnd::kReady;
    if (ready > 0 && watched[0].revents != 0) return WaitEnd::kReady;
    if (ready == 0) return WaitEnd::kTimeOver;
    if (limit_ms != kWithoutLimit) limit_ms = LeftUntil(end, limit_ms);
  }
  return WaitEnd::kCancelled;
}

// How long a cancelled job still waits for somebody to take its output.
int LeftForOutput() {
  const Clock::time_point cancelled(Clock::duration(requested_at.load()));
  return LeftUntil(cancelled + milliseconds(kLastOutputLimit_ms), kLastOutputLimit_ms);
}

bool IsReady(WaitEnd end) { return end == WaitEnd::kReady; }

}  // namespace

void InstallCancelHandler(void (*at_once)()) {
  OpenWakePipe();
  call_at_once = at_once;
  struct sigaction action = {};
  action.sa_handler = HandleTerminate;  // not restarting what it interrupts
  sigaction(SIGTERM, &action, nullptr);
}

bool CancelRequested() { return requested_at.load() != 0; }

bool WaitForInput(int descriptor) {
  return IsReady(WaitFor(descriptor, POLLIN, kWithoutLimit, Heed::kCancel));
}

bool WaitForRoom(int descriptor) {
  return IsReady(WaitFor(descriptor, POLLOUT, kWithoutLimit, Heed::kCancel));
}

WaitEnd WaitForInput(int descriptor, int limit_ms) {
  return WaitFor(descriptor, POLLIN, limit_ms, Heed::kCancel);
}

bool WaitForLastInput(int descriptor, int limit_ms) {
  return IsReady(WaitFor(descriptor, POLLIN, limit_ms, Heed::kNothing));
}

bool WaitForTaker(int descriptor) {
  return WaitForRoom(descriptor) ||
         IsReady(WaitFor(descriptor, POLLOUT, LeftForOutput(), Heed::kNothing));
}

CancelBlock::CancelBlock() {
  const sigset_t terminate = TerminateSet();
  pthread_sigmask(SIG_BLOCK, &terminate, &old_mask_);
}

CancelBlock::~CancelBlock() { pthread_sigmask(SIG_SETMASK, &old_mask_, nullptr); }

}  // namespace zr7700
