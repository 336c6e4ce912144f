// The orderly end of the process where a fixed buffer of the engine's side would overflow.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_FATAL_LIMIT_H_
#define ZR7700_ENGINE_FATAL_LIMIT_H_

namespace zr7700 {

// Logs the limit (a phrase such as "8000 bytes in a file") with the file that exceeds it, tells the
// user in one "ERROR: " line on standard error, and exits with status 1. Main thread.
[[noreturn]] void EndProcessAtLimit(const char* limit, const char* file);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_FATAL_LIMIT_H_
