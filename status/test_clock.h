// The platform's clock under a test's control: test_clock.cc takes its place in a test program.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_TEST_CLOCK_H_
#define ZR7700_STATUS_TEST_CLOCK_H_

namespace zr7700::test {

// Lets the clock tell `seconds` now; it runs on from there. Any thread.
void SetClock(double seconds);

// Lets the clock stand still at exactly `seconds`. While the clock runs, no other thread asks it.
void StopClock(double seconds);

// Lets the clock jump ahead, whether it runs or not. Any thread.
void AdvanceClock(double seconds);

}  // namespace zr7700::test

#endif  // ZR7700_STATUS_TEST_CLOCK_H_
