// SIGTERM as the job sees it: a request that wakes whoever waits for input.
//
// The handler itself only stores a lock-free flag and writes to a pipe; job_cancel.h brings the
// cancel's effects about on the main thread.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_CANCEL_SIGNAL_H_
#define ZR7700_BASE_CANCEL_SIGNAL_H_

#include <signal.h>

namespace zr7700 {

// Installs the handler; a SIGTERM before this has the system's default effect. Without a pipe to be
// had, a cancel still ends the waits that it interrupts. Main thread, once.
void InstallCancelHandler();

// True once SIGTERM has come. Any thread.
bool CancelRequested();

// Waits until `descriptor` has input or has reached its end, or until a cancel is requested, for as
// long as that takes. True for the former, false for a cancel. Any thread.
bool WaitForInput(int descriptor);

// The same for a descriptor that is to take output, or has lost its reader.
bool WaitForRoom(int descriptor);

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
