// A test body that runs in a process of its own, for what a process can do only once.
#ifndef ZR7700_STATUS_TEST_PROCESS_H_
#define ZR7700_STATUS_TEST_PROCESS_H_

#include <functional>

namespace zr7700::test {

// Runs `body` in a child process and fails the calling test when an expectation failed there, or
// when it did not end by itself with status 0. No other thread may run.
void InOwnProcess(const std::function<void()>& body);

}  // namespace zr7700::test

#endif  // ZR7700_STATUS_TEST_PROCESS_H_
