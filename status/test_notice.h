// A printer utility that is told of errors and answers at once: test_notice.cc takes the place of
// the notices in a test program.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_TEST_NOTICE_H_
#define ZR7700_STATUS_TEST_NOTICE_H_

#include <functional>

namespace zr7700::test {

// Forgets the notices so far; later ones call `hook`, if there is one, and come to `result`. No
// other thread runs.
void ScriptNotices(int result, std::function<void()> hook = nullptr);

// The notices of a printer error that wait for no reply, and all others. Any thread.
int ErrorNotices();
int OtherNotices();

}  // namespace zr7700::test

#endif  // ZR7700_STATUS_TEST_NOTICE_H_
