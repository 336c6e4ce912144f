// What a cancel does to the job.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_JOB_CANCEL_H_
#define ZR7700_STATUS_JOB_CANCEL_H_

namespace zr7700 {

// Makes SIGTERM cancel the job from now on. A process that exits with a cancel pending still brings
// the cancel's effects about. Main thread, once.
void InstallJobCancel();

// Takes note of a requested cancel: the first call after SIGTERM stops and joins the status thread
// and releases the shared status memory. True once the job is cancelled; CancelRequested() asks
// without any effect. The first call takes as long as the thread's last read and notice do: some 3
// seconds with a silent printer, and up to 20 more when the utility neither accepts nor answers.
// Main thread.
bool TakeCancel();

// Waits until `descriptor` takes output without blocking, or can take none any more. A cancel that
// comes meanwhile has its effects at once; the waiting then goes on, but a reader that takes
// nothing for 20 seconds is given up: what is written to `descriptor` after that is discarded. Main
// thread.
void WaitForOutput(int descriptor);

}  // namespace zr7700

#endif  // ZR7700_STATUS_JOB_CANCEL_H_
