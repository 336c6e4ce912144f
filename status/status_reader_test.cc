// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/status_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <cmath>
#include <functional>
#include <thread>
#include <vector>

#include "base/cancel_signal.h"
#include "platform/platform.h"
#include "status/back_channel.h"
#include "status/test_back_channel.h"
#include "status/test_clock.h"
#include "status/test_records.h"
#include "tests/support/later_cancel.h"
#include "tests/support/log_capture.h"
#include "tests/support/own_process.h"

namespace zr7700 {
namespace {

using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kTimedOut[] = "     ## TIMED OUT TRYING TO GET STATUS FOR 3s ##";
constexpr char kFailed[] = "FAILED TO GET STATUS";

PrinterStatusRecord Numbered(int serial) {
  return MakeRecord({.serial = static_cast<uint8_t>(serial)});
}

std::span<const uint8_t> From(const PrinterStatusRecord& record, size_t first, size_t count) {
  return std::span(record).subspan(first, count);
}

// A reader that has just read a record, at second 100.0 of the clock.
class ReaderAtWork : public ::testing::Test {
 protected:
  ReaderAtWork() { RestartAt(100.0); }

  // Reads a record at that second of the clock, and leaves the channel empty.
  void RestartAt(double clock_s) {
    test::SetClock(clock_s);
    // More than one, in case there is something to be drained.
    for (int i = 0; i < 60; i++) channel_.Send(Numbered(0));
    PrinterStatusRecord record;
    EXPECT_TRUE(ReadPrinterStatus(record));
    std::vector<uint8_t> rest(static_cast<size_t>(channel_.Unread()));
    EXPECT_EQ(ReadBackChannel(rest, 0.0), static_cast<ssize_t>(rest.size()));
    log_.Clear();
  }

  void SendNumbered(int first, int last) const {
    for (int i = first; i <= last; i++) channel_.Send(Numbered(i));
  }

  // Reads while the clock stands, first at 200 s, and from the first empty read on at `clock_s`. A
  // record comes half a second of real time later.
  bool ReadsWhenTheClockStepsFrom200To(double clock_s, PrinterStatusRecord& record) {
    RestartAt(200.0);
    test::StopClock(200.0);
    std::thread printer([&] {
      constexpr std::chrono::milliseconds kMoment(10);
      const auto has_read = Contains(StartsWith("     Read -1 bytes"));
      while (!::testing::Value(log_.Lines(), has_read)) std::this_thread::sleep_for(kMoment);
      test::StopClock(clock_s);
      std::this_thread::sleep_for(50 * kMoment);
      SendNumbered(1, 1);
    });
    const bool is_read = ReadPrinterStatus(record);
    printer.join();
    return is_read;
  }

  test::BackChannel channel_;
  test::LogCapture log_;
};

TEST(FirstStatusRead, DoesNotDrain) {
  test::InOwnProcess([] {
    const test::BackChannel channel;
    const test::LogCapture log;
    for (int i = 1; i <= 3; i++) channel.Send(Numbered(i));
    PrinterStatusRecord record;
    EXPECT_TRUE(GetPrinterStatus(record));
    EXPECT_EQ(record, Numbered(1));
    EXPECT_EQ(channel.Unread(), 2 * 144);
    EXPECT_THAT(log.Lines(), ElementsAre("Getting Status", "ClearBackChannelBuffer called",
                                         "ClearBackChannelBuffer returning 1",
                                         "     Read 144 bytes cartridgeID: 0x51", "Got Status"));
  });
}

TEST(FirstStatusRead, StaysWithoutADrainUntilARecordCame) {
  test::InOwnProcess([] {
    const test::BackChannel channel;
    const test::LogCapture log;
    PrinterStatusRecord record;
    test::SetClock(50.95);
    EXPECT_FALSE(ReadPrinterStatus(record));
    channel.Send(Numbered(1));
    EXPECT_TRUE(ReadPrinterStatus(record));
    EXPECT_EQ(record, Numbered(1));
    EXPECT_THAT(log.Lines(), Not(Contains(StartsWith("ClearBackChannelBuffer times"))));
  });
}

TEST(FirstStatusRead, RepeatedClearingReadsNothing) {
  test::InOwnProcess([] {
    const test::BackChannel channel;
    const test::LogCapture log;
    channel.Send(Numbered(1));
    EXPECT_TRUE(ClearBackChannelBuffer());
    test::AdvanceClock(10);
    EXPECT_TRUE(ClearBackChannelBuffer());
    EXPECT_EQ(channel.Unread(), 144);
  });
}

TEST_F(ReaderAtWork, DrainsSixteenRecordsASecond) {
  SendNumbered(1, 60);
  test::AdvanceClock(2.03);  // 32.48
  EXPECT_TRUE(ClearBackChannelBuffer());
  EXPECT_EQ(channel_.Unread(), 28 * 144);
  EXPECT_THAT(log_.Lines(), ElementsAre("ClearBackChannelBuffer called",
                                        "ClearBackChannelBuffer times to read: 32",
                                        "ClearBackChannelBuffer returning 1"));
}

TEST_F(ReaderAtWork, DrainsFiftyWithoutTheNoteAtFifty) {
  SendNumbered(1, 60);
  test::AdvanceClock(3.15);  // 50.4
  EXPECT_TRUE(ClearBackChannelBuffer());
  EXPECT_EQ(channel_.Unread(), 10 * 144);
  EXPECT_THAT(log_.Lines(), Contains("ClearBackChannelBuffer times to read: 50"));
}

TEST_F(ReaderAtWork, DrainsFiftyAtMost) {
  SendNumbered(1, 60);
  test::AdvanceClock(3.22);  // 51.52
  EXPECT_TRUE(ClearBackChannelBuffer());
  EXPECT_EQ(channel_.Unread(), 10 * 144);
  EXPECT_THAT(log_.Lines(),
              ElementsAre("ClearBackChannelBuffer called",
                          "!! ClearBackChannelBuffer times to read was 51.  SET TO 50",
                          "ClearBackChannelBuffer returning 1"));
}

TEST_F(ReaderAtWork, TenSecondsAreAHundredAndSixtyRecords) {
  SendNumbered(1, 51);
  test::AdvanceClock(10.01);
  PrinterStatusRecord record;
  EXPECT_TRUE(GetPrinterStatus(record));
  EXPECT_EQ(record, Numbered(51));
  EXPECT_THAT(log_.Lines(),
              Contains("!! ClearBackChannelBuffer times to read was 160.  SET TO 50"));
}

TEST_F(ReaderAtWork, DrainEndsWhenTheChannelRunsDry) {
  SendNumbered(1, 3);
  test::AdvanceClock(1.03);  // 16.48
  const double start_s = platform::Now();
  EXPECT_FALSE(ClearBackChannelBuffer());
  const double waited_s = platform::Now() - start_s;
  EXPECT_GE(waited_s, 0.29);
  EXPECT_LT(waited_s, 0.59);  // one read waited, not two
  EXPECT_EQ(channel_.Unread(), 0);
  EXPECT_EQ(log_.Lines().back(), "ClearBackChannelBuffer returning 0");
}

TEST_F(ReaderAtWork, DrainEndsAtAShortRead) {
  SendNumbered(1, 1);
  const PrinterStatusRecord cut = Numbered(2);
  channel_.Send(From(cut, 0, 100));
  test::AdvanceClock(1.03);
  EXPECT_FALSE(ClearBackChannelBuffer());
  EXPECT_EQ(channel_.Unread(), 0);
}

TEST_F(ReaderAtWork, DrainRestartsTheTime) {
  test::AdvanceClock(1.03);
  SendNumbered(1, 30);
  ClearBackChannelBuffer();
  EXPECT_EQ(channel_.Unread(), 14 * 144);
  test::AdvanceClock(0.26);  // 4.16
  ClearBackChannelBuffer();
  EXPECT_EQ(channel_.Unread(), 10 * 144);
}

TEST_F(ReaderAtWork, NothingIsDrainedRightAfterARecord) {
  SendNumbered(1, 2);
  PrinterStatusRecord record;
  EXPECT_TRUE(ReadPrinterStatus(record));
  EXPECT_EQ(record, Numbered(1));
  EXPECT_THAT(log_.Lines(), Contains("ClearBackChannelBuffer times to read: 0"));
}

TEST_F(ReaderAtWork, LogsTheDrainAtItsLevels) {
  const test::LogCapture log(3);
  test::AdvanceClock(0.03);
  ClearBackChannelBuffer();
  EXPECT_THAT(log.Lines(), ElementsAre("ClearBackChannelBuffer called"));
}

TEST_F(ReaderAtWork, RealignsAStreamThatBeginsAtByte37) {
  const PrinterStatusRecord cut = Numbered(1);
  channel_.Send(From(cut, 144 - 37, 37));
  SendNumbered(2, 4);
  PrinterStatusRecord record;
  EXPECT_TRUE(ReadPrinterStatus(record));
  // The first read takes the 37 bytes and 107 of record 2, whose other 37 bytes are thrown away.
  EXPECT_EQ(record, Numbered(3));
  EXPECT_EQ(channel_.Unread(), 144);
  EXPECT_THAT(log_.Lines(), Contains("Realigning Buffer: 37"));
}

TEST_F(ReaderAtWork, RealignsWhenTheMarkRunsOverTheEnd) {
  // 143 bytes of rubbish, so that the start mark comes last; behind the end the search goes on with
  // the first two bytes, which read like the ones behind a mark.
  std::vector<uint8_t> rubbish(143, 0);
  rubbish[0] = 0x8E;
  rubbish[1] = 0x5A;
  channel_.Send(rubbish);
  SendNumbered(1, 2);
  PrinterStatusRecord record;
  EXPECT_TRUE(ReadPrinterStatus(record));
  EXPECT_EQ(record, Numbered(2));
  EXPECT_THAT(log_.Lines(), Contains("Realigning Buffer: 143"));
}

TEST_F(ReaderAtWork, ARecordInTwoPiecesCostsNoAlignment) {
  const PrinterStatusRecord first = Numbered(1);
  channel_.Send(From(first, 0, 100));
  std::thread printer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(350));
    std::vector<uint8_t> rest(first.begin() + 100, first.end());
    const PrinterStatusRecord second = Numbered(2);
    rest.insert(rest.end(), second.begin(), second.end());
    channel_.Send(rest);  // 188 bytes
    SendNumbered(3, 3);
  });
  PrinterStatusRecord record;
  EXPECT_TRUE(ReadPrinterStatus(record));
  printer.join();
  EXPECT_EQ(record, Numbered(3));
  EXPECT_EQ(channel_.Unread(), 0);
  const std::vector<std::string> lines = log_.Lines();
  EXPECT_THAT(lines, Contains("     Read 100 bytes cartridgeID: 0x51"));
  EXPECT_THAT(lines, Contains("Realigning Buffer: 0"));
  EXPECT_THAT(lines, Contains("Realigning Buffer: 44"));
}

TEST_F(ReaderAtWork, PiecesThatArriveTogetherAreOneRecord) {
  const PrinterStatusRecord record = Numbered(1);
  channel_.Send(From(record, 0, 100));
  channel_.Send(From(record, 100, 44));
  PrinterStatusRecord read;
  EXPECT_TRUE(ReadPrinterStatus(read));
  EXPECT_EQ(read, record);
}

TEST_F(ReaderAtWork, SkipsARecordWithAWrongChecksum) {
  PrinterStatusRecord wrong = Numbered(1);
  wrong[142]++;
  channel_.Send(wrong);
  SendNumbered(2, 2);
  PrinterStatusRecord record;
  EXPECT_TRUE(ReadPrinterStatus(record));
  EXPECT_EQ(record, Numbered(2));
  EXPECT_THAT(log_.Lines(), Contains("Realigning Buffer: 0"));
}

TEST_F(ReaderAtWork, SkipsARecordWithAWrongEndMark) {
  PrinterStatusRecord wrong = Numbered(1);
  wrong[143] = 0x05;
  channel_.Send(wrong);
  SendNumbered(2, 2);
  PrinterStatusRecord record;
  EXPECT_TRUE(ReadPrinterStatus(record));
  EXPECT_EQ(record, Numbered(2));
}

TEST_F(ReaderAtWork, WrongChecksumsAreRetriedUntilTheLimit) {
  RestartAt(200.02);
  PrinterStatusRecord wrong = Numbered(1);
  wrong[142]++;
  for (int i = 0; i < 40; i++) channel_.Send(wrong);
  const PrinterStatusRecord before = Numbered(9);
  PrinterStatusRecord record = before;
  const double start_s = platform::Now();
  EXPECT_FALSE(GetPrinterStatus(record));
  const double waited_s = platform::Now() - start_s;
  EXPECT_GT(waited_s, 2.9);  // until second 203 of the clock is over
  EXPECT_LT(waited_s, 3.4);
  EXPECT_EQ(record, before);
  const std::vector<std::string> lines = log_.Lines();
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines[lines.size() - 2], kTimedOut);
  EXPECT_EQ(lines.back(), kFailed);
}

TEST_F(ReaderAtWork, SilenceIsGivenUpAfterTwoToThreeSeconds) {
  RestartAt(200.9);
  const PrinterStatusRecord before = Numbered(9);
  PrinterStatusRecord record = before;
  const double start_s = platform::Now();
  EXPECT_FALSE(GetPrinterStatus(record));
  const double waited_s = platform::Now() - start_s;
  EXPECT_GT(waited_s, 2.0);  // counted from second 200
  EXPECT_LT(waited_s, 2.5);
  EXPECT_EQ(record, before);
  EXPECT_THAT(log_.Lines(), Contains("     Read -1 bytes cartridgeID: 0x0"));
  EXPECT_THAT(log_.Lines(), Contains(kTimedOut));
  EXPECT_EQ(log_.Lines().back(), kFailed);
}

TEST_F(ReaderAtWork, RetriesEveryTenthOfASecond) {
  std::thread printer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(550));
    channel_.Send(Numbered(1));
  });
  PrinterStatusRecord record;
  EXPECT_TRUE(ReadPrinterStatus(record));
  printer.join();
  int empty_reads = 0;
  for (const std::string& line : log_.Lines()) {
    if (line == "     Read -1 bytes cartridgeID: 0x0") empty_reads++;
  }
  EXPECT_THAT(empty_reads, AnyOf(5, 6));
}

TEST_F(ReaderAtWork, AClosedPrinterEndIsSilence) {
  RestartAt(200.95);
  channel_.Close();
  PrinterStatusRecord record = Numbered(9);
  EXPECT_FALSE(GetPrinterStatus(record));
  EXPECT_EQ(record, Numbered(9));
  EXPECT_EQ(log_.Lines().back(), kFailed);
}

TEST_F(ReaderAtWork, ThreeSecondsExactlyAreNotTheLimit) {
  PrinterStatusRecord record;
  EXPECT_TRUE(ReadsWhenTheClockStepsFrom200To(203.0, record));
  EXPECT_EQ(record, Numbered(1));
  EXPECT_THAT(log_.Lines(), Not(Contains(kTimedOut)));
}

TEST_F(ReaderAtWork, TheLeastMoreThanThreeSecondsIsTheLimit) {
  PrinterStatusRecord record;
  EXPECT_FALSE(ReadsWhenTheClockStepsFrom200To(std::nextafter(203.0, 204.0), record));
  EXPECT_EQ(log_.Lines().back(), kTimedOut);
}

// A reader that has just read a record, in a process of its own that is cancelled.
class CancelledReader : public ReaderAtWork {
 protected:
  static void Cancel() {
    InstallCancelHandler();
    raise(SIGTERM);
  }

  static double SecondsOf(const std::function<void()>& action) {
    const double start_s = platform::Now();
    action();
    return platform::Now() - start_s;
  }
};

TEST_F(CancelledReader, GivesASilentPrinterHalfASecond) {
  test::InOwnProcess([this] {
    Cancel();
    PrinterStatusRecord record = Numbered(9);
    const double waited_s = SecondsOf([&] { EXPECT_FALSE(GetPrinterStatus(record)); });
    EXPECT_GE(waited_s, 0.49);
    EXPECT_LT(waited_s, 1.5);
    EXPECT_EQ(record, Numbered(9));
    // It has not timed out.
    EXPECT_THAT(log_.Lines(), ElementsAre("Getting Status", "ClearBackChannelBuffer called",
                                          "ClearBackChannelBuffer times to read: 0",
                                          "ClearBackChannelBuffer returning 1",
                                          "     Read -1 bytes cartridgeID: 0x0",
                                          "     Read -1 bytes cartridgeID: 0x0", kFailed));
  });
}

TEST_F(CancelledReader, TakesARecordThatComesWithinThat) {
  test::InOwnProcess([this] {
    Cancel();
    std::thread printer([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
      SendNumbered(1, 1);
    });
    PrinterStatusRecord record;
    EXPECT_TRUE(GetPrinterStatus(record));
    printer.join();
    EXPECT_EQ(record, Numbered(1));
  });
}

TEST_F(CancelledReader, DropsStaleRecordsWithoutWaitingForMore) {
  test::InOwnProcess([this] {
    Cancel();
    SendNumbered(1, 20);
    test::AdvanceClock(10);
    EXPECT_LT(SecondsOf([] { EXPECT_FALSE(ClearBackChannelBuffer()); }), 0.25);
    EXPECT_EQ(channel_.Unread(), 0);
  });
}

TEST_F(CancelledReader, ACancelEndsTheReadThatHasBegun) {
  test::InOwnProcess([this] {
    InstallCancelHandler();
    test::CancelIn(250);
    PrinterStatusRecord record;
    EXPECT_LT(SecondsOf([&] { EXPECT_FALSE(GetPrinterStatus(record)); }), 1.7);
    EXPECT_THAT(log_.Lines(), Not(Contains(kTimedOut)));
    EXPECT_EQ(log_.Lines().back(), kFailed);
  });
}

}  // namespace
}  // namespace zr7700
