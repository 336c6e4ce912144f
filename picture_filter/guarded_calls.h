// Calls into a C library that leaves by longjmp when it fails.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_GUARDED_CALLS_H_
#define ZR7700_PICTURE_FILTER_GUARDED_CALLS_H_

#include <csetjmp>

namespace zr7700 {

// Not for use by two threads at once.
class GuardedCalls {
 public:
  // Calls `calls`; false when the library left it by Leave(). Nothing in `calls` may need a
  // destructor: it would not run.
  template <typename Calls>
  bool Run(const Calls& calls) {
    if (setjmp(jump_) != 0) return false;
    calls();
    return true;
  }

  // For the library's error function, below Run() only.
  [[noreturn]] void Leave() { std::longjmp(jump_, 1); }

 private:
  std::jmp_buf jump_;
};

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_GUARDED_CALLS_H_
