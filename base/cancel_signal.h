// SIGTERM as the job sees it: a request that wakes whoever waits. Every wait of the job is one of
// those below, or a pause (pause.h), which is made of them.
//
// The handler itself only stores a lock-free time and writes to a pipe; job_cancel.h brings the
// cancel's effects about on the main thread.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_CANCEL_SIGNAL_H_
#define ZR7700_BASE_CANCEL_SIGNAL_H_

#include <signal.h>

namespace zr7700 {

// Installs the handler; a SIGTERM before this has the system's default effect. Without a pipe to be
// had, a cancel still ends the waits that it interrupts. The handler also calls `at_once`, with
// every SIGTERM and on whichever thread that finds: it may do only what a signal handler may. Main
// thread, once.
void InstallCancelHandler(void (*at_once)() = nullptr);

// True once SIGTERM has come. Any thread.
bool CancelRequested();

// Waits until `descriptor` has input or has reached its end, or until a cancel is requested, for as
// long as that takes. True for the former, false for a cancel. Any thread.
bool WaitForInput(int descriptor);

// The same for a descriptor that is to take output, or has lost its reader.
bool WaitForRoom(int descriptor);

// How a wait with a limit ended.
enum class WaitEnd { kReady, kTimeOver, kCancelled };

// Waits for input like WaitForInput, but no longer than `limit_ms`; a negative descriptor never has
// any. A cancel that was requested before ends the wait at once. Any thread.
WaitEnd WaitForInput(int descriptor, int limit_ms);

// Waits for input for up to `limit_ms` whether or not a cancel is requested: for the last word that
// a cancelled job still listens to. True when there is some. Any thread.
bool WaitForLastInput(int descriptor, int limit_ms);

// How long after SIGTERM a cancelled job still waits for somebody to take its output: a printer
// that loads a disc takes nothing for a while, and after some 30 seconds CUPS kills the job.
inline constexpr int kLastOutputLimit_ms = 20'000;

// Waits until `descriptor` takes output or has lost its reader: without limit, but until
// kLastOutputLimit_ms after SIGTERM once that has come. False when it did not by then. Any thread.
bool WaitForTaker(int descriptor);

// While one lives, SIGTERM is held back from the thread that made it and from threads that this
// thread starts: they inherit the mask, so that the signal finds the main thread.
class CancelBlock {
 public:
  CancelBlock();
  ~CancelBlock();
  CancelBlock(const CancelBlock&) = delete;
  CancelBlock& operator=(const CancelBlock&) = delete;

 private:
  sigset_t old_mask_;
};

}  // namespace zr7700

#endif  // ZR7700_BASE_CANCEL_SIGNAL_H_
