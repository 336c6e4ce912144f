// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/test_sleep.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

namespace zr7700::test {
namespace {

constexpr useconds_t kTick_us = 100'000;

std::atomic<int> seconds_slept = 0;
std::atomic<int> ticks_slept = 0;
std::atomic<int> other_sleeps = 0;
std::function<void()> sleep_hook;

void Pause() {
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

// What the linker puts in the places of sleep and usleep.
extern "C" unsigned __wrap_sleep(unsigned seconds);
extern "C" int __wrap_usleep(useconds_t microseconds);

extern "C" unsigned __wrap_sleep(unsigned seconds) {
  seconds_slept += static_cast<int>(seconds);
  Pause();
  return 0;
}

extern "C" int __wrap_usleep(useconds_t microseconds) {
  (microseconds == kTick_us ? ticks_slept : other_sleeps)++;
  Pause();
  return 0;
}

}  // namespace zr7700::test
