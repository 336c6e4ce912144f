// A timer signal that interrupts every system call that it finds.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_TESTS_SUPPORT_SIGNAL_STORM_H_
#define ZR7700_TESTS_SUPPORT_SIGNAL_STORM_H_

namespace zr7700::test {

// While one lives, SIGALRM comes every two milliseconds, and its handler restarts nothing. One at a
// time.
class SignalStorm {
 public:
  SignalStorm();
  ~SignalStorm();
  SignalStorm(const SignalStorm&) = delete;
  SignalStorm& operator=(const SignalStorm&) = delete;

  // How often it has come in this process.
  static int Count();
};

}  // namespace zr7700::test

#endif  // ZR7700_TESTS_SUPPORT_SIGNAL_STORM_H_
