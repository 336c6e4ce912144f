// A test body that runs in a process of its own, for what a process can do only once.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_TESTS_SUPPORT_OWN_PROCESS_H_
#define ZR7700_TESTS_SUPPORT_OWN_PROCESS_H_

#include <functional>

namespace zr7700::test {

// Starts the test program anew for the present test alone, fixture and all, and runs `body` there.
// Fails the present test when that one failed or did not end by itself. Call it once a test.
void InOwnProcess(const std::function<void()>& body);

}  // namespace zr7700::test

#endif  // ZR7700_TESTS_SUPPORT_OWN_PROCESS_H_
