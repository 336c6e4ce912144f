// Pausing without losing time: test_sleep.cc takes the place of base/pause.cc in a test program.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_TEST_SLEEP_H_
#define ZR7700_STATUS_TEST_SLEEP_H_

#include <functional>

namespace zr7700::test {

// Forgets the sleeps so far and the hook. No other thread runs.
void ResetSleeps();

// The seconds of all pauses of whole seconds, and the number of pauses of 100 ms. Any thread.
int SecondsSlept();
int TicksSlept();

// The number of pauses of any other length. Any thread.
int OtherSleeps();

// Called with every pause, by the thread that pauses.
void OnSleep(std::function<void()> hook);

}  // namespace zr7700::test

#endif  // ZR7700_STATUS_TEST_SLEEP_H_
