// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/status_thread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include "base/cancel_signal.h"
#include "status/condition_reports.h"
#include "status/printer_conditions.h"
#include "status/test_notice.h"
#include "status/test_printer.h"
#include "status/test_records.h"
#include "status/test_sleep.h"
#include "status/utility_notices.h"
#include "tests/support/log_capture.h"
#include "tests/support/own_process.h"
#include "tests/support/stream_capture.h"

namespace zr7700 {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kBinEmpty[] =
    "STATE: +media-needed\n"
    "ERROR: recoverable: Disc input bin is empty.  Open the cover, add more discs, and close the "
    "cover to continue.\n";
constexpr char kBinFilled[] =
    "STATE: -media-needed\n"
    "ERROR: recovered: Continuing\n"
    "ERROR: recovered: Disc input bin is empty.  Open the cover, add more discs, and close the "
    "cover to continue.\n";

test::Answer WithError(uint32_t word) { return MakeRecord({.error_word = word}); }

class StatusThread : public ::testing::Test {
 protected:
  StatusThread() {
    test::ScriptPrinter({MakeRecord()});
    test::ScriptNotices(kNoticeNoReply);
    test::ResetSleeps();
    PrinterStatusRecord record;
    ReadErrorWord(record);  // an error word of an earlier test
    ReportPrinterConditions({});
  }
  ~StatusThread() override {
    StopStatusThread();
    test::ResetSleeps();
  }

  // Runs the thread until the printer has given all its answers, and the last once more.
  void RunThread(const std::vector<test::Answer>& answers, bool suppress) {
    test::ScriptPrinter(answers);
    ASSERT_TRUE(StartStatusThread(suppress));
    const int wanted = static_cast<int>(answers.size());
    for (int i = 0; i < 5000 && test::StatusRequests() <= wanted; i++) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    StopStatusThread();
    EXPECT_GT(test::StatusRequests(), wanted);
  }

  test::LogCapture log_;
};

TEST_F(StatusThread, ReadsEveryEighthTick) {
  std::mutex mutex;
  std::vector<int> ticks;
  test::ScriptPrinter({MakeRecord()});
  test::OnStatusRequest([&] {
    const std::lock_guard lock(mutex);
    ticks.push_back(test::TicksSlept());
  });
  ASSERT_TRUE(StartStatusThread(false));
  while (test::StatusRequests() < 4) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  StopStatusThread();
  ASSERT_GE(ticks.size(), 4U);
  EXPECT_THAT(std::vector<int>(ticks.begin(), ticks.begin() + 4), ElementsAre(0, 8, 16, 24));
  EXPECT_EQ(test::SecondsSlept(), 0);
  EXPECT_EQ(test::OtherSleeps(), 0);
}

TEST_F(StatusThread, LogsItsStartItsChecksAndItsEnd) {
  RunThread({WithError(0xABC123)}, true);
  const std::vector<std::string> lines = log_.Lines();
  ASSERT_GE(lines.size(), 4U);
  EXPECT_EQ(lines.front(), "Start ReadStatusThread");
  EXPECT_EQ(lines[1], "Error check ABC123 ");
  EXPECT_EQ(lines.back(), "Exit ReadStatusThread");
}

TEST_F(StatusThread, LogsTheCheckAfterTheReport) {
  const test::StderrCapture capture;
  RunThread({WithError(0x24)}, true);
  const std::vector<std::string> lines = log_.Lines();
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines[1], "Setting paper out");
  EXPECT_EQ(lines[2], "Error check 24 ");
}

TEST_F(StatusThread, ReportsChangesOnly) {
  test::StderrCapture capture;
  RunThread({WithError(0x24), WithError(0x24), WithError(0)}, true);
  EXPECT_EQ(capture.Take(), std::string(kBinEmpty) + kBinFilled);
}

TEST_F(StatusThread, ALostRecordClearsNothing) {
  test::StderrCapture capture;
  RunThread({WithError(0x24), std::nullopt}, true);
  EXPECT_EQ(capture.Take(), kBinEmpty);
}

TEST_F(StatusThread, WhatIsShownStaysShownAcrossPages) {
  test::StderrCapture capture;
  RunThread({WithError(0x24)}, true);
  RunThread({WithError(0x24)}, true);
  EXPECT_EQ(capture.Take(), kBinEmpty);
}

TEST_F(StatusThread, TellsTheUtilityOfANewErrorOnly) {
  const test::StderrCapture capture;
  RunThread({WithError(0x04), WithError(0x04), WithError(0x04)}, false);
  EXPECT_EQ(test::ErrorNotices(), 1);
  EXPECT_EQ(test::OtherNotices(), 0);
}

TEST_F(StatusThread, TellsTheUtilityAgainWhenTheErrorChanges) {
  const test::StderrCapture capture;
  RunThread({WithError(0x04), WithError(0x08), WithError(0x04)}, false);
  EXPECT_EQ(test::ErrorNotices(), 3);
}

TEST_F(StatusThread, TellsTheUtilityAgainWhenTheErrorComesBack) {
  const test::StderrCapture capture;
  RunThread({WithError(0x04), WithError(0), WithError(0x04)}, false);
  EXPECT_EQ(test::ErrorNotices(), 2);
}

TEST_F(StatusThread, TellsTheUtilityNothingWhenTheErrorGoes) {
  RunThread({WithError(0), WithError(0)}, false);
  EXPECT_EQ(test::ErrorNotices(), 0);
}

// The word that is compared is 0, as it is at the start.
TEST_F(StatusThread, TellsTheUtilityNothingOfAlignmentAlone) {
  const test::StderrCapture capture;
  RunThread({MakeRecord({.alignment = 1})}, false);
  EXPECT_EQ(test::ErrorNotices(), 0);
}

TEST_F(StatusThread, TellsTheUtilityAnewOnEveryPage) {
  const test::StderrCapture capture;
  RunThread({WithError(0x04)}, false);
  RunThread({WithError(0x04)}, false);
  EXPECT_EQ(test::ErrorNotices(), 2);
}

TEST_F(StatusThread, TellsTheUtilityNothingWhenSuppressed) {
  const test::StderrCapture capture;
  RunThread({WithError(0x04), WithError(0x08)}, true);
  EXPECT_EQ(test::ErrorNotices(), 0);
}

TEST_F(StatusThread, TheSuppressionHoldsForOnePage) {
  const test::StderrCapture capture;
  RunThread({WithError(0x04)}, true);
  RunThread({WithError(0x04)}, false);
  EXPECT_EQ(test::ErrorNotices(), 1);
}

TEST_F(StatusThread, TellsTheUtilityBeforeItReports) {
  test::StderrCapture capture;
  std::string at_notice = "no notice";
  test::ScriptNotices(kNoticeNoReply, [&] { at_notice = capture.Arrived(); });
  RunThread({WithError(0x24)}, false);
  EXPECT_EQ(at_notice, "");
  EXPECT_EQ(capture.Take(), kBinEmpty);
}

TEST_F(StatusThread, StoppingTwiceOrWithoutAThreadDoesNothing) {
  StopStatusThread();
  ASSERT_TRUE(StartStatusThread(true));
  StopStatusThread();
  StopStatusThread();
  const int requests = test::StatusRequests();
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_EQ(test::StatusRequests(), requests);
}

TEST_F(StatusThread, IsStoppedAndJoinedHoweverEarlyTheStopComes) {
  for (int i = 0; i < 200; i++) {
    ASSERT_TRUE(StartStatusThread(true));
    StopStatusThread();
  }
  const std::vector<std::string> lines = log_.Lines();
  EXPECT_THAT(lines, Contains("Start ReadStatusThread").Times(200));
  EXPECT_THAT(lines, Contains("Exit ReadStatusThread").Times(200));
}

TEST_F(StatusThread, CanBeStartedAgain) {
  RunThread({MakeRecord()}, true);
  RunThread({MakeRecord()}, true);
  EXPECT_THAT(log_.Lines(), Contains("Exit ReadStatusThread").Times(2));
}

TEST_F(StatusThread, LeavesTheCancelSignalToTheMainThread) {
  std::atomic<int> blocked = -1;
  test::ScriptPrinter({MakeRecord()});
  test::OnStatusRequest([&] {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    blocked = sigismember(&mask, SIGTERM);
  });
  ASSERT_TRUE(StartStatusThread(true));
  while (test::StatusRequests() == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  StopStatusThread();
  EXPECT_EQ(blocked.load(), 1);
  sigset_t mine;
  pthread_sigmask(SIG_SETMASK, nullptr, &mine);
  EXPECT_EQ(sigismember(&mine, SIGTERM), 0);
}

using ReportStatusUntilClearTest = StatusThread;

TEST_F(ReportStatusUntilClearTest, ReturnsAtOnceWhenThePrinterIsContent) {
  ReportStatusUntilClear(10);
  EXPECT_EQ(test::StatusRequests(), 2);  // one by the fixture
  EXPECT_EQ(test::SecondsSlept(), 0);
}

TEST_F(ReportStatusUntilClearTest, ClearsWhatIsShown) {
  test::StderrCapture capture;
  ReportPrinterConditions({.paper_out = true});
  ReportStatusUntilClear(10);
  EXPECT_EQ(capture.Take(), std::string(kBinEmpty) + kBinFilled);
}

TEST_F(ReportStatusUntilClearTest, ReadsOnceASecondUntilClear) {
  test::StderrCapture capture;
  test::ScriptPrinter({WithError(0x24), WithError(0x24), WithError(0), WithError(0)});
  ReportStatusUntilClear(10);
  EXPECT_EQ(test::StatusRequests(), 3);
  EXPECT_EQ(test::SecondsSlept(), 2);
  EXPECT_EQ(capture.Take(), std::string(kBinEmpty) + kBinFilled);
}

TEST_F(ReportStatusUntilClearTest, StopsAfterTheNumberOfReads) {
  test::StderrCapture capture;
  test::ScriptPrinter({WithError(0x24)});
  ReportStatusUntilClear(10);
  EXPECT_EQ(test::StatusRequests(), 10);
  EXPECT_EQ(test::SecondsSlept(), 10);
  EXPECT_EQ(capture.Take(), kBinEmpty);
}

TEST_F(ReportStatusUntilClearTest, AnErrorWithoutAConditionIsNotClear) {
  test::ScriptPrinter({WithError(0x04)});
  ReportStatusUntilClear(3);
  EXPECT_EQ(test::StatusRequests(), 3);
}

TEST_F(ReportStatusUntilClearTest, AlignmentNeededIsNotClear) {
  const test::StderrCapture capture;
  test::ScriptPrinter({MakeRecord({.alignment = 1})});
  ReportStatusUntilClear(3);
  EXPECT_EQ(test::StatusRequests(), 3);
}

TEST_F(ReportStatusUntilClearTest, NeverTellsTheUtility) {
  const test::StderrCapture capture;
  test::ScriptPrinter({WithError(0x24), WithError(0x04), WithError(0x10)});
  ReportStatusUntilClear(3);
  EXPECT_EQ(test::ErrorNotices() + test::OtherNotices(), 0);
}

TEST_F(ReportStatusUntilClearTest, NoReadsAtAllIsNothing) {
  ReportStatusUntilClear(0);
  EXPECT_EQ(test::StatusRequests(), 1);
}

TEST_F(StatusThread, ACancelEndsItByItself) {
  test::InOwnProcess([] {
    const test::LogCapture log;
    InstallCancelHandler();
    ASSERT_TRUE(StartStatusThread(true));
    while (test::StatusRequests() < 3) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    raise(SIGTERM);
    for (int i = 0; i < 5000 && !::testing::Value(log.Lines(), Contains("Exit ReadStatusThread"));
         i++) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(log.Lines().back(), "Exit ReadStatusThread");
    StopStatusThread();
  });
}

TEST_F(ReportStatusUntilClearTest, ACancelledJobReadsOnce) {
  test::InOwnProcess([] {
    const test::StderrCapture capture;
    InstallCancelHandler();
    raise(SIGTERM);
    test::ScriptPrinter({WithError(0x24)});
    ReportStatusUntilClear(10);
    EXPECT_EQ(test::StatusRequests(), 1);
    EXPECT_EQ(capture.Arrived(), kBinEmpty);
  });
}

TEST_F(ReportStatusUntilClearTest, ACancelEndsThePauseWithoutAnotherRead) {
  test::InOwnProcess([] {
    const test::StderrCapture capture;
    InstallCancelHandler();
    test::OnSleep([] {
      if (test::SecondsSlept() == 3) raise(SIGTERM);
    });
    test::ScriptPrinter({WithError(0x24)});
    ReportStatusUntilClear(10);
    EXPECT_EQ(test::StatusRequests(), 3);
  });
}

// Neither the ink that is empty nor the alignment can be told from a record that did not come.
TEST_F(ReportStatusUntilClearTest, AReadThatACancelCutShortChangesNothingThatIsShown) {
  test::InOwnProcess([] {
    test::StderrCapture capture;
    test::ScriptPrinter({MakeRecord({.error_word = 0x24, .alignment = 1}), std::nullopt});
    ReportStatusUntilClear(1);
    const std::string shown = capture.Arrived();
    EXPECT_THAT(shown, HasSubstr("The cartridge needs aligning"));
    InstallCancelHandler();
    raise(SIGTERM);
    ReportStatusUntilClear(1);
    EXPECT_EQ(capture.Arrived(), shown);
    EXPECT_EQ(test::StatusRequests(), 2);
  });
}

}  // namespace
}  // namespace zr7700
