// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/own_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace zr7700::test {
namespace {

constexpr char kMark[] = "ZR7700_TEST_OWN_PROCESS";

[[noreturn]] void RunPresentTestAnew() {
  const ::testing::TestInfo* present = ::testing::UnitTest::GetInstance()->current_test_info();
  const std::string filter =
      std::string("--gtest_filter=") + present->test_suite_name() + "." + present->name();
  setenv(kMark, "1", 1);
  unsetenv("GTEST_OUTPUT");
  execl("/proc/self/exe", "test", filter.c_str(), "--gtest_brief=1", static_cast<char*>(nullptr));
  _exit(127);
}

}  // namespace

void InOwnProcess(const std::function<void()>& body) {
  if (getenv(kMark) != nullptr) {
    body();
    return;
  }
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) RunPresentTestAnew();
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace zr7700::test
