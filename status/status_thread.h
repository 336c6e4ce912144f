// Watches the printer while a page prints, and once more after the job.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_STATUS_THREAD_H_
#define ZR7700_STATUS_STATUS_THREAD_H_

namespace zr7700 {

// Starts the thread that reads the printer's status every 0.8 seconds and reports its conditions;
// it tells the printer utility of a new error unless `suppress_utility` is set. A cancel ends it by
// itself. False when there is no such thread. Main thread; no thread runs.
bool StartStatusThread(bool suppress_utility);

// Asks the thread to stop and joins it; does nothing when none was started. Takes as long as the
// thread's present read or notice does. Main thread, never a signal handler.
void StopStatusThread();

// Reads the status up to `reads` times, a second apart, and reports the conditions until the
// printer has none; a cancelled job reads once at most. Never tells the utility. Main thread; no
// thread runs.
void ReportStatusUntilClear(int reads);

}  // namespace zr7700

#endif  // ZR7700_STATUS_STATUS_THREAD_H_
