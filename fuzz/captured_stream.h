// A standard stream whose output stays in memory.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_FUZZ_CAPTURED_STREAM_H_
#define ZR7700_FUZZ_CAPTURED_STREAM_H_

#include <sys/types.h>

#include <cstdio>
#include <string>

#include "fuzz/input.h"

namespace zr7700::fuzz {

// Stands in the place of `stdout` or `stderr` while it lives. Not by a descriptor: millions of runs
// are to pass without a system call, and the fuzzer's own words still reach the terminal.
class CapturedStream {
 public:
  explicit CapturedStream(FILE*& stream) : place_(stream), original_(stream) {
    cookie_io_functions_t functions = {};
    functions.write = [](void* text, const char* bytes, size_t count) {
      static_cast<std::string*>(text)->append(bytes, count);
      return static_cast<ssize_t>(count);
    };
    place_ = fopencookie(&text_, "w", functions);
    Require(place_ != nullptr);
  }
  ~CapturedStream() {
    fclose(place_);
    place_ = original_;
  }
  CapturedStream(const CapturedStream&) = delete;
  CapturedStream& operator=(const CapturedStream&) = delete;

  // What has been written so far.
  const std::string& text() {
    fflush(place_);
    return text_;
  }

 private:
  FILE*& place_;
  FILE* original_;
  std::string text_;
};

}  // namespace zr7700::fuzz

#endif  // ZR7700_FUZZ_CAPTURED_STREAM_H_
