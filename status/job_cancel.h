// What a cancel does to the job.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_JOB_CANCEL_H_
#define ZR7700_STATUS_JOB_CANCEL_H_

namespace zr7700 {

// Makes SIGTERM cancel the job from now on. The shared status memory's name goes at once, wherever
// the job is; the rest at the next TakeCancel(). A process that exits with a cancel pending still
// brings the cancel's effects about. Main thread, once.
void InstallJobCancel();

// Takes note of a requested cancel: the first call after SIGTERM stops and joins the status thread
// and releases the shared status memory. True once the job is cancelled; CancelRequested() asks
// without any effect. The first call takes as long as what the thread has begun: less than a
// second, for none of its waits outlasts a cancel. Main thread.
bool TakeCancel();

// Sleeps for `length_ms` (pause.h). A cancel ends it and has its effects at once: false then, and
// whenever the job is cancelled. Main thread.
bool PauseJob(int length_ms);

// Waits until `descriptor` takes output without blocking, or can take none any more, or the job is
// cancelled: the cancel then has had its effects. Main thread.
void WaitForOutput(int descriptor);

}  // namespace zr7700

#endif  // ZR7700_STATUS_JOB_CANCEL_H_
