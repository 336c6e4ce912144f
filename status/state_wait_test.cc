// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/state_wait.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "base/cancel_signal.h"
#include "status/test_clock.h"
#include "status/test_printer.h"
#include "status/test_records.h"
#include "status/test_sleep.h"
#include "tests/support/log_capture.h"
#include "tests/support/own_process.h"

namespace zr7700 {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

constexpr char kGiveUpState[] = "Printer state did not change - GIVE UP WAITING FOR PRINTER STATE";
constexpr char kGiveUpSilence[] = "No STATUS FOR TOO LONG - GIVE UP WAITING FOR PRINTER STATE";

test::Answer InState(char state) { return MakeRecord({.state = state}); }

// The clock goes with the sleeps: a second each. A failed read takes as long as the reader's limit.
class WaitForPrinterStateTest : public ::testing::Test {
 protected:
  WaitForPrinterStateTest() {
    test::ResetSleeps();
    test::OnSleep([] { test::AdvanceClock(1.0); });
    test::SetClock(5000.5);
  }
  ~WaitForPrinterStateTest() override { test::ResetSleeps(); }

  static void Script(const std::vector<test::Answer>& answers, double failed_read_s = 2.4) {
    test::ScriptPrinter(answers);
    test::OnStatusRequest([answers, failed_read_s] {
      const size_t turn = std::min(static_cast<size_t>(test::StatusRequests()), answers.size() - 1);
      if (!answers[turn]) test::AdvanceClock(failed_read_s);
    });
  }

  PrinterStatusRecord record_ = {};
  test::LogCapture log_;
};

TEST_F(WaitForPrinterStateTest, AStateThatHoldsAlreadyTakesOneRead) {
  Script({InState('I')});
  EXPECT_TRUE(WaitForPrinterState(record_, 'I', true, 20));
  EXPECT_EQ(test::StatusRequests(), 1);
  EXPECT_EQ(test::SecondsSlept(), 0);
  EXPECT_EQ(record_, *InState('I'));
  EXPECT_THAT(log_.Lines(),
              ElementsAre("WaitForPrinterState called Looking for I", "Printer State: I",
                          "Equal: 1", "WaitForPrinterState RETURNING (1)"));
}

TEST_F(WaitForPrinterStateTest, ReadsOnceASecondUntilTheStateComes) {
  Script({InState('B'), InState('B'), InState('I')});
  EXPECT_TRUE(WaitForPrinterState(record_, 'I', true, 20));
  EXPECT_EQ(test::StatusRequests(), 3);
  EXPECT_EQ(test::SecondsSlept(), 2);
  EXPECT_THAT(log_.Lines(),
              ElementsAre("WaitForPrinterState called Looking for I", "Printer State: B",
                          "Equal: 1", "Printer State: B", "Equal: 1", "Printer State: I",
                          "Equal: 1", "WaitForPrinterState RETURNING (1)"));
}

TEST_F(WaitForPrinterStateTest, WaitsForAnotherStateWhenNotEqual) {
  Script({InState('B'), InState('I')});
  EXPECT_TRUE(WaitForPrinterState(record_, 'B', false, 20));
  EXPECT_EQ(test::StatusRequests(), 2);
  EXPECT_THAT(log_.Lines(), Contains("Equal: 0").Times(2));
}

TEST_F(WaitForPrinterStateTest, GivesUpOnlyWhenTheLimitIsExceeded) {
  test::SetClock(5000.1);
  Script({InState('B')});
  EXPECT_FALSE(WaitForPrinterState(record_, 'I', true, 2));
  // At 0.1, 1.1 and 2.1 seconds after the truncated start; 2.1 is more than 2.
  EXPECT_EQ(test::StatusRequests(), 3);
  EXPECT_THAT(log_.Lines(), Contains(kGiveUpState));
  EXPECT_EQ(log_.Lines().back(), "WaitForPrinterState RETURNING (0)");
}

TEST_F(WaitForPrinterStateTest, TwentySecondsAreTwentyPasses) {
  Script({InState('B')});
  EXPECT_FALSE(WaitForPrinterState(record_, 'I', true, 20));
  // Reads at 0.5, 1.5 ... 20.5 seconds after the truncated start.
  EXPECT_EQ(test::StatusRequests(), 21);
  EXPECT_EQ(test::SecondsSlept(), 20);
}

TEST_F(WaitForPrinterStateTest, ASilentPrinterEndsTheWaitAtItsSecondFailedRead) {
  Script({std::nullopt});
  EXPECT_FALSE(WaitForPrinterState(record_, 'I', true, 20));
  // 0.5 + 2.4 = 2.9 is not more than 3; 2.9 + 1 + 2.4 is.
  EXPECT_EQ(test::StatusRequests(), 2);
  EXPECT_THAT(log_.Lines(), ElementsAre("WaitForPrinterState called Looking for I", kGiveUpSilence,
                                        "WaitForPrinterState RETURNING (0)"));
}

TEST_F(WaitForPrinterStateTest, ASilenceOfMoreThanThreeSecondsEndsItAtTheFirst) {
  test::SetClock(5000.9);
  Script({std::nullopt}, 2.2);  // 3.1 seconds after the truncated start
  EXPECT_FALSE(WaitForPrinterState(record_, 'I', true, 20));
  EXPECT_EQ(test::StatusRequests(), 1);
}

TEST_F(WaitForPrinterStateTest, AReadThatSucceedsRestartsTheSilence) {
  test::SetClock(5000.0);
  // Failed reads of 2.1 s: 2.1 s of silence, then a record at 3.1; truncated to 3, the next failed
  // read ends at 4.1 + 2.1 = 6.2, after 3.2 s of silence.
  Script({std::nullopt, InState('B'), std::nullopt, InState('I')}, 2.1);
  EXPECT_FALSE(WaitForPrinterState(record_, 'I', true, 20));
  EXPECT_EQ(test::StatusRequests(), 3);
  EXPECT_EQ(record_, *InState('B'));
}

TEST_F(WaitForPrinterStateTest, AShortFailureIsForgiven) {
  test::SetClock(5000.0);
  Script({std::nullopt, InState('I')}, 2.1);
  EXPECT_TRUE(WaitForPrinterState(record_, 'I', true, 20));
  EXPECT_THAT(log_.Lines(), Not(Contains(kGiveUpSilence)));
}

TEST_F(WaitForPrinterStateTest, LeavesTheRecordAloneWhenNoneCame) {
  Script({std::nullopt});
  const PrinterStatusRecord before = MakeRecord({.serial = 7});
  record_ = before;
  EXPECT_FALSE(WaitForPrinterState(record_, 'I', true, 20));
  EXPECT_EQ(record_, before);
}

TEST_F(WaitForPrinterStateTest, ACancelEndsItWithinOnePassWithoutTheClosingLine) {
  test::InOwnProcess([] {
    const test::LogCapture log;
    InstallCancelHandler();
    test::ScriptPrinter({InState('B')});
    test::OnStatusRequest([] {
      if (test::StatusRequests() == 1) raise(SIGTERM);
    });
    PrinterStatusRecord record = {};
    EXPECT_FALSE(WaitForPrinterState(record, 'I', true, 20));
    EXPECT_EQ(test::StatusRequests(), 2);
    EXPECT_EQ(log.Lines().back(), "WaitForPrinterState Job Cancelled");
  });
}

TEST_F(WaitForPrinterStateTest, TheWantedStateGoesBeforeACancel) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    raise(SIGTERM);
    test::ScriptPrinter({InState('I')});
    PrinterStatusRecord record = {};
    EXPECT_TRUE(WaitForPrinterState(record, 'I', true, 20));
  });
}

TEST_F(WaitForPrinterStateTest, LogsTheCancelAsAMilestone) {
  test::InOwnProcess([] {
    const test::LogCapture log(2);
    InstallCancelHandler();
    raise(SIGTERM);
    test::ScriptPrinter({InState('B')});
    PrinterStatusRecord record = {};
    EXPECT_FALSE(WaitForPrinterState(record, 'I', true, 20));
    // Level 1 is written at threshold 2, level 3 is not.
    EXPECT_THAT(log.Lines(), Contains("Printer State: B"));
    EXPECT_THAT(log.Lines(), Not(Contains("WaitForPrinterState Job Cancelled")));
  });
}

TEST_F(WaitForPrinterStateTest, TheLimitExactlyIsNotExceeded) {
  test::StopClock(5000.0);
  Script({InState('B')});
  EXPECT_FALSE(WaitForPrinterState(record_, 'I', true, 2));
  // At 0, 1, 2 and 3 seconds; only 3 is more than 2.
  EXPECT_EQ(test::StatusRequests(), 4);
}

TEST_F(WaitForPrinterStateTest, ASilenceOfThreeSecondsExactlyIsForgiven) {
  test::StopClock(5000.0);
  Script({std::nullopt, InState('I')}, 3.0);
  EXPECT_TRUE(WaitForPrinterState(record_, 'I', true, 20));
  EXPECT_EQ(test::StatusRequests(), 2);
}

TEST_F(WaitForPrinterStateTest, AMillisecondMoreOfSilenceIsNot) {
  test::StopClock(5000.0);
  Script({std::nullopt, InState('I')}, 3.001);
  EXPECT_FALSE(WaitForPrinterState(record_, 'I', true, 20));
  EXPECT_EQ(test::StatusRequests(), 1);
}

// Records at 0.75, 1.75, 2.75 and 3.75 seconds, then a failed read from 4.75 on: the silence counts
// from second 3.
TEST_F(WaitForPrinterStateTest, SilenceCountsFromTheLastRecordsWholeSecond) {
  const std::vector<test::Answer> answers = {InState('B'), InState('B'), InState('B'),
                                             InState('B'), std::nullopt, InState('I')};
  test::StopClock(5000.75);
  Script(answers, 1.25);  // until 6.0: 3 seconds of silence
  EXPECT_TRUE(WaitForPrinterState(record_, 'I', true, 20));
  EXPECT_EQ(test::StatusRequests(), 6);
  test::StopClock(5000.75);
  Script(answers, 1.5);  // until 6.25, 2.5 seconds after the last record
  EXPECT_FALSE(WaitForPrinterState(record_, 'I', true, 20));
  EXPECT_EQ(test::StatusRequests(), 5);
}

TEST_F(WaitForPrinterStateTest, ACancelEndsThePause) {
  test::InOwnProcess([] {
    const test::LogCapture log;
    InstallCancelHandler();
    test::ResetSleeps();
    test::OnSleep([] { raise(SIGTERM); });
    test::ScriptPrinter({InState('B')});
    PrinterStatusRecord record = {};
    EXPECT_FALSE(WaitForPrinterState(record, 'I', true, 20));
    EXPECT_EQ(test::StatusRequests(), 2);  // the pass that was begun
    EXPECT_EQ(log.Lines().back(), "WaitForPrinterState Job Cancelled");
  });
}

}  // namespace
}  // namespace zr7700
