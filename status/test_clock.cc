// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/test_clock.h"

#include <atomic>
#include <chrono>

#include "platform/platform.h"

namespace zr7700 {
namespace {

std::atomic<double> offset_s = 1000.0;
std::atomic<bool> stopped = false;

double SteadySeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

namespace platform {
double Now() { return (stopped.load() ? 0.0 : SteadySeconds()) + offset_s.load(); }
}  // namespace platform

namespace test {
void SetClock(double seconds) {
  offset_s = seconds - SteadySeconds();
  stopped = false;
}

void StopClock(double seconds) {
  offset_s = seconds;
  stopped = true;
}

void AdvanceClock(double seconds) { offset_s = offset_s.load() + seconds; }
}  // namespace test

}  // namespace zr7700
