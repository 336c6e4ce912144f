// Signals that ask a program to end, as a flag that its loop looks at.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_STOP_SIGNALS_H_
#define ZR7700_VIRTUAL_PRINTER_STOP_SIGNALS_H_

#include <atomic>
#include <csignal>
#include <initializer_list>

namespace zr7700::printer {

// Written by the signal handler.
inline std::atomic<bool> stop_asked = false;
static_assert(std::atomic<bool>::is_always_lock_free);

// From now on these signals only set `stop_asked`, and interrupt a wait. The end of the terminal
// stays ignored where it was (nohup). Once, by the main thread.
inline void NoteStopSignals(std::initializer_list<int> signals) {
  struct sigaction action {};
  action.sa_handler = [](int) { stop_asked = true; };
  action.sa_flags = SA_RESTART;
  for (const int number : signals) {
    struct sigaction old {};
    sigaction(number, nullptr, &old);
    if (number != SIGHUP || old.sa_handler != SIG_IGN) sigaction(number, &action, nullptr);
  }
}

// A reader that has gone, and a file that may grow no more, are told by the failing write.
inline void IgnoreWriteSignals() {
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
}

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_STOP_SIGNALS_H_
