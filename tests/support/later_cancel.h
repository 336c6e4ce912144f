// A cancel that comes while the test waits for something.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_TESTS_SUPPORT_LATER_CANCEL_H_
#define ZR7700_TESTS_SUPPORT_LATER_CANCEL_H_

namespace zr7700::test {

// Sends SIGTERM to the calling thread in so many milliseconds; it must still exist then.
void CancelIn(int delay_ms);

}  // namespace zr7700::test

#endif  // ZR7700_TESTS_SUPPORT_LATER_CANCEL_H_
