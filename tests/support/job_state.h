// The process-wide state of a job, as it is when a process starts.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_TESTS_SUPPORT_JOB_STATE_H_
#define ZR7700_TESTS_SUPPORT_JOB_STATE_H_

namespace zr7700::test {

// Empties the job variables (a clip table is given back first), the engine handle and the entry
// table, and puts every setting to its built-in default. May write a line to the log.
void ResetJobState();

}  // namespace zr7700::test

#endif  // ZR7700_TESTS_SUPPORT_JOB_STATE_H_
