// Sleeping without losing time: test_sleep.cc takes the place of sleep and usleep in a test program
// that is linked with --wrap for both.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_TEST_SLEEP_H_
#define ZR7700_STATUS_TEST_SLEEP_H_

#include <functional>

namespace zr7700::test {

// Forgets the sleeps so far and the hook. No other thread runs.
void ResetSleeps();

// The seconds slept through sleep(), and the calls of usleep with 100,000 us. Any thread.
int SecondsSlept();
int TicksSlept();

// The number of usleep calls with any other length. Any thread.
int OtherSleeps();

// Called with every sleep, by the thread that sleeps.
void OnSleep(std::function<void()> hook);

}  // namespace zr7700::test

#endif  // ZR7700_STATUS_TEST_SLEEP_H_
