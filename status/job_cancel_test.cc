// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/job_cancel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "base/cancel_signal.h"
#include "base/paths.h"
#include "status/status_memory.h"
#include "status/status_thread.h"
#include "status/test_memory.h"
#include "status/test_printer.h"
#include "status/test_records.h"
#include "tests/support/later_cancel.h"
#include "tests/support/own_process.h"

namespace zr7700 {
namespace {

using std::chrono::milliseconds;

TEST(TakeCancelTest, IsFalseAtTheStart) { EXPECT_FALSE(TakeCancel()); }

TEST(TakeCancelTest, IsTrueForGoodAfterTheSignal) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    EXPECT_FALSE(TakeCancel());
    raise(SIGTERM);
    EXPECT_TRUE(TakeCancel());
    EXPECT_TRUE(TakeCancel());
  });
}

TEST(TakeCancelTest, TheSignalAloneReleasesNothing) {
  test::InOwnProcess([] {
    const test::MemoryName name;
    InstallCancelHandler();
    ASSERT_TRUE(CreateStatusMemory(144));
    raise(SIGTERM);
    EXPECT_TRUE(test::LookAtMemory());
    CloseStatusMemory();
  });
}

TEST(TakeCancelTest, ReleasesTheStatusMemory) {
  test::InOwnProcess([] {
    const test::MemoryName name;
    InstallCancelHandler();
    ASSERT_TRUE(CreateStatusMemory(144));
    EXPECT_FALSE(TakeCancel());
    EXPECT_TRUE(test::LookAtMemory());
    raise(SIGTERM);
    EXPECT_TRUE(TakeCancel());
    EXPECT_FALSE(test::LookAtMemory());
  });
}

TEST(TakeCancelTest, StopsTheStatusThreadBeforeItReleasesTheMemory) {
  test::InOwnProcess([] {
    const test::MemoryName name;
    InstallCancelHandler();
    ASSERT_TRUE(CreateStatusMemory(144));
    std::atomic<bool> reading = false;
    std::atomic<bool> memory_at_end_of_read = false;
    test::ScriptPrinter({MakeRecord()});
    test::OnStatusRequest([&] {
      reading = true;
      std::this_thread::sleep_for(milliseconds(200));
      memory_at_end_of_read = test::LookAtMemory().has_value();
    });
    ASSERT_TRUE(StartStatusThread(true));
    while (!reading) std::this_thread::yield();
    raise(SIGTERM);
    EXPECT_TRUE(TakeCancel());
    EXPECT_TRUE(memory_at_end_of_read);
    EXPECT_FALSE(test::LookAtMemory());
    const int requests = test::StatusRequests();
    std::this_thread::sleep_for(milliseconds(900));  // longer than the thread's period
    EXPECT_EQ(test::StatusRequests(), requests);
  });
}

TEST(TakeCancelTest, LaterStopsAndReleasesAreTolerated) {
  test::InOwnProcess([] {
    const test::MemoryName name;
    InstallCancelHandler();
    test::ScriptPrinter({MakeRecord()});
    ASSERT_TRUE(CreateStatusMemory(144));
    ASSERT_TRUE(StartStatusThread(true));
    raise(SIGTERM);
    EXPECT_TRUE(TakeCancel());
    StopStatusThread();
    CloseStatusMemory();
    EXPECT_TRUE(TakeCancel());
  });
}

TEST(InstallJobCancelTest, TheNameOfTheMemoryGoesWithTheSignalItself) {
  test::InOwnProcess([] {
    const test::MemoryName name;
    InstallJobCancel();
    ASSERT_TRUE(CreateStatusMemory(144));
    raise(SIGTERM);
    EXPECT_FALSE(test::LookAtMemory());
    // Whatever the status thread still publishes goes nowhere and does no harm.
    PublishStatus(MakeRecord());
    EXPECT_TRUE(TakeCancel());
  });
}

// An object of the same name is another job's by then.
TEST(InstallJobCancelTest, TheNameIsRemovedOnce) {
  test::InOwnProcess([] {
    const test::MemoryName name;
    InstallJobCancel();
    ASSERT_TRUE(CreateStatusMemory(144));
    raise(SIGTERM);
    close(shm_open(paths::kStatusMemory, O_RDWR | O_CREAT, 0600));
    EXPECT_TRUE(TakeCancel());
    raise(SIGTERM);
    CloseStatusMemory();
    EXPECT_TRUE(test::LookAtMemory());
  });
}

TEST(PauseJobTest, IsTrueWhenItWasNotDisturbed) { EXPECT_TRUE(PauseJob(1)); }

TEST(PauseJobTest, ACancelEndsItAndHasItsEffects) {
  test::InOwnProcess([] {
    const test::MemoryName name;
    InstallCancelHandler();
    ASSERT_TRUE(CreateStatusMemory(144));
    test::CancelIn(50);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(PauseJob(20'000));
    EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(5000));
    EXPECT_FALSE(test::LookAtMemory());
    EXPECT_FALSE(PauseJob(20'000));
    EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(5000));
  });
}

TEST(WaitForOutputTest, ACancelEndsItAndHasItsEffects) {
  test::InOwnProcess([] {
    const test::MemoryName name;
    InstallCancelHandler();
    ASSERT_TRUE(CreateStatusMemory(144));
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    fcntl(ends[1], F_SETFL, O_NONBLOCK);
    while (write(ends[1], "stuck", 5) > 0) {
    }
    test::CancelIn(50);
    WaitForOutput(ends[1]);
    EXPECT_TRUE(CancelRequested());
    EXPECT_FALSE(test::LookAtMemory());
  });
}

}  // namespace
}  // namespace zr7700
