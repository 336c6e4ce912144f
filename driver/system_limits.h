// What becomes of the job where the system has no more of something.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DRIVER_SYSTEM_LIMITS_H_
#define ZR7700_DRIVER_SYSTEM_LIMITS_H_

namespace zr7700 {

// From here on a file that may not grow is an error of the write that would make it, where the
// system would kill the process otherwise (SIGXFSZ); and where C++ finds no memory the job ends
// with one "ERROR: " line, a line in the log and exit status 1. No exception is thrown: one would
// have to pass the engine's C interface, or a thread's end. Main thread, before all else.
void PrepareForSystemLimits();

// Ends the job that way. Needs no memory. Any thread, and no other returns to its work meanwhile.
[[noreturn]] void EndJobWithoutMemory();

}  // namespace zr7700

#endif  // ZR7700_DRIVER_SYSTEM_LIMITS_H_
