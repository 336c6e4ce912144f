// What goes to standard output and to standard error, kept in memory: takes the place of
// whole_write.cc in the one source that includes it.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_FUZZ_CAPTURED_OUTPUT_H_
#define ZR7700_FUZZ_CAPTURED_OUTPUT_H_

#include <unistd.h>

#include <span>
#include <string>

#include "base/printer_output.h"
#include "base/whole_write.h"
#include "fuzz/input.h"

namespace zr7700::fuzz {

// Written since the last ForgetOutput. Millions of runs pass without a system call, and the
// fuzzer's own words still reach the terminal.
inline std::string printed;
inline std::string told;

inline void ForgetOutput() {
  FlushPrinterOutput();
  printed.clear();
  told.clear();
}

// What has gone to the printer, the buffered bytes as well.
inline const std::string& Printed() {
  FlushPrinterOutput();
  return printed;
}

}  // namespace zr7700::fuzz

namespace zr7700 {

WriteEnd WriteWhole(int descriptor, std::span<const char> bytes) {
  fuzz::Require(descriptor == STDOUT_FILENO || descriptor == STDERR_FILENO);
  (descriptor == STDOUT_FILENO ? fuzz::printed : fuzz::told).append(bytes.data(), bytes.size());
  return WriteEnd::kWritten;
}

}  // namespace zr7700

#endif  // ZR7700_FUZZ_CAPTURED_OUTPUT_H_
