// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/test_sleep.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

#include "base/cancel_signal.h"
#include "base/pause.h"

namespace zr7700 {
namespace test {
namespace {

constexpr int kTick_ms = 100;

std::atomic<int> seconds_slept = 0;
std::atomic<int> ticks_slept = 0;
std::atomic<int> other_sleeps = 0;
std::function<void()> sleep_hook;

void Sleep() {
  if (sleep_hook) sleep_hook();
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

}  // namespace

void ResetSleeps() {
  seconds_slept = 0;
  ticks_slept = 0;
  other_sleeps = 0;
  sleep_hook = nullptr;
}

int SecondsSlept() { return seconds_slept.load(); }
int TicksSlept() { return ticks_slept.load(); }
int OtherSleeps() { return other_sleeps.load(); }
void OnSleep(std::function<void()> hook) { sleep_hook = std::move(hook); }

}  // namespace test

// In the place of pause.cc.
bool Pause(int length_ms) {
  if (length_ms % 1000 == 0) {
    test::seconds_slept += length_ms / 1000;
  } else {
    (length_ms == test::kTick_ms ? test::ticks_slept : test::other_sleeps)++;
  }
  test::Sleep();
  return !CancelRequested();
}

}  // namespace zr7700
