// The whole job, from the diagnostic log's first line to the exit status.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DRIVER_JOB_H_
#define ZR7700_DRIVER_JOB_H_

namespace zr7700 {

// Runs the job that the filter's command line describes and returns the exit status: 0 when at
// least one page was begun and the job reached its end in order, even after a cancel, else 1. Main
// thread, once a process.
int RunJob(int argc, char* argv[]);

}  // namespace zr7700

#endif  // ZR7700_DRIVER_JOB_H_
