// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/pause.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <thread>

#include "base/cancel_signal.h"
#include "tests/support/later_cancel.h"
#include "tests/support/own_process.h"
#include "tests/support/signal_storm.h"

namespace zr7700 {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

class PauseTest : public ::testing::Test {
 protected:
  milliseconds Paused() const {
    return std::chrono::duration_cast<milliseconds>(Clock::now() - start_);
  }

  const Clock::time_point start_ = Clock::now();
};

TEST_F(PauseTest, LastsAsLongAsItIsSaid) {
  EXPECT_TRUE(Pause(150));
  EXPECT_GE(Paused(), milliseconds(150));
  EXPECT_LT(Paused(), milliseconds(1000));
}

TEST_F(PauseTest, OfNothingIsOverAtOnce) {
  EXPECT_TRUE(Pause(0));
  EXPECT_LT(Paused(), milliseconds(100));
}

TEST_F(PauseTest, IsNotCutShortByOtherSignals) {
  test::InOwnProcess([this] {
    const test::SignalStorm storm;
    EXPECT_TRUE(Pause(300));
    EXPECT_GE(Paused(), milliseconds(300));
    EXPECT_LT(Paused(), milliseconds(1000));
  });
}

TEST_F(PauseTest, ACancelEndsIt) {
  test::InOwnProcess([this] {
    InstallCancelHandler();
    test::CancelIn(50);
    EXPECT_FALSE(Pause(20'000));
    EXPECT_LT(Paused(), milliseconds(5000));
  });
}

TEST_F(PauseTest, DoesNotTakePlaceAfterACancel) {
  test::InOwnProcess([this] {
    InstallCancelHandler();
    raise(SIGTERM);
    EXPECT_FALSE(Pause(20'000));
    EXPECT_LT(Paused(), milliseconds(5000));
  });
}

// The signal is the main thread's; the status thread pauses, too.
TEST_F(PauseTest, ACancelEndsThoseOfAllThreads) {
  test::InOwnProcess([this] {
    InstallCancelHandler();
    std::thread other([] { EXPECT_FALSE(Pause(20'000)); });
    EXPECT_TRUE(Pause(50));
    raise(SIGTERM);
    other.join();
    EXPECT_LT(Paused(), milliseconds(5000));
  });
}

}  // namespace
}  // namespace zr7700
