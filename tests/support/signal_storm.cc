// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/signal_storm.h"

#include <signal.h>
#include <sys/time.h>

namespace zr7700::test {
namespace {

constexpr suseconds_t kPeriod_us = 2000;

volatile sig_atomic_t count = 0;

void SetTimer(suseconds_t period_us) {
  const itimerval timer = {{0, period_us}, {0, period_us}};
  setitimer(ITIMER_REAL, &timer, nullptr);
}

}  // namespace

SignalStorm::SignalStorm() {
  struct sigaction action = {};
  action.sa_handler = [](int) { count = count + 1; };
  sigaction(SIGALRM, &action, nullptr);
  SetTimer(kPeriod_us);
}

SignalStorm::~SignalStorm() {
  SetTimer(0);
  signal(SIGALRM, SIG_IGN);
}

int SignalStorm::Count() { return count; }

}  // namespace zr7700::test
