// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/back_channel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <ctime>
#include <thread>

#include "base/cancel_signal.h"
#include "status/test_back_channel.h"
#include "status/test_records.h"
#include "tests/support/later_cancel.h"
#include "tests/support/own_process.h"

namespace zr7700 {
namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

bool IsNullDevice(int descriptor) {
  struct stat null = {};
  struct stat other = {};
  return stat("/dev/null", &null) == 0 && fstat(descriptor, &other) == 0 &&
         S_ISCHR(other.st_mode) && null.st_rdev == other.st_rdev;
}

TEST(PrepareBackChannelTest, MakesTheChannelNonBlocking) {
  const test::BackChannel channel;
  EXPECT_EQ(fcntl(3, F_GETFL) & O_NONBLOCK, O_NONBLOCK);
}

TEST(PrepareBackChannelTest, FillsClosedDescriptors) {
  test::InOwnProcess([] {
    close(0);
    close(3);
    PrepareBackChannel();
    EXPECT_TRUE(IsNullDevice(0));
    EXPECT_TRUE(IsNullDevice(3));
    const int next = open("/dev/null", O_RDONLY);
    EXPECT_GT(next, 3);
  });
}

TEST(PrepareBackChannelTest, LeavesOpenDescriptorsAlone) {
  struct stat before = {};
  fstat(1, &before);
  const test::BackChannel channel;
  struct stat after = {};
  fstat(1, &after);
  EXPECT_EQ(before.st_ino, after.st_ino);
  EXPECT_FALSE(IsNullDevice(3));
}

TEST(ReadBackChannelTest, HandsOverWhatIsThere) {
  const test::BackChannel channel;
  const PrinterStatusRecord sent = MakeRecord({.serial = 1});
  channel.Send(sent);
  PrinterStatusRecord read = {};
  EXPECT_EQ(ReadBackChannel(read, 0.0), 144);
  EXPECT_EQ(read, sent);
}

TEST(ReadBackChannelTest, HandsOverLessThanAsked) {
  const test::BackChannel channel;
  channel.Send(std::array<uint8_t, 5>{1, 2, 3, 4, 5});
  PrinterStatusRecord read = {};
  EXPECT_EQ(ReadBackChannel(read, 1.0), 5);
}

TEST(ReadBackChannelTest, ReadsNothingIntoAnEmptyBuffer) {
  const test::BackChannel channel;
  channel.Send(std::array<uint8_t, 2>{1, 2});
  EXPECT_EQ(ReadBackChannel({}, 0.3), 0);
  EXPECT_EQ(channel.Unread(), 2);
}

TEST(ReadBackChannelTest, ComesBackAtOnceWithoutATimeOut) {
  const test::BackChannel channel;
  const Clock::time_point start = Clock::now();
  PrinterStatusRecord read;
  EXPECT_EQ(ReadBackChannel(read, 0.0), -1);
  EXPECT_LT(SecondsSince(start), 0.1);
}

TEST(ReadBackChannelTest, WaitsForTheTimeOut) {
  const test::BackChannel channel;
  const Clock::time_point start = Clock::now();
  PrinterStatusRecord read;
  EXPECT_EQ(ReadBackChannel(read, 0.3), -1);
  EXPECT_GE(SecondsSince(start), 0.29);
  EXPECT_LT(SecondsSince(start), 0.6);
}

TEST(ReadBackChannelTest, WakesForBytes) {
  const test::BackChannel channel;
  std::thread printer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    channel.Send(std::array<uint8_t, 1>{7});
  });
  PrinterStatusRecord read;
  EXPECT_EQ(ReadBackChannel(read, 5.0), 1);
  printer.join();
}

TEST(ReadBackChannelTest, TellsOfTheEnd) {
  test::BackChannel channel;
  channel.Close();
  PrinterStatusRecord read;
  EXPECT_EQ(ReadBackChannel(read, 0.0), 0);
}

TEST(ReadBackChannelTest, AChannelThatIsClosedFromTheStartNeverAnswers) {
  test::InOwnProcess([] {
    close(3);
    PrepareBackChannel();
    const Clock::time_point start = Clock::now();
    const clock_t burnt = clock();
    PrinterStatusRecord read;
    EXPECT_EQ(ReadBackChannel(read, 0.3), -1);
    EXPECT_GE(SecondsSince(start), 0.29);
    EXPECT_LT(SecondsSince(start), 0.6);
    EXPECT_LT(static_cast<double>(clock() - burnt) / CLOCKS_PER_SEC, 0.1);
    EXPECT_EQ(ReadBackChannel(read, 0.0), -1);
  });
}

TEST(ReadBackChannelTest, ABlockingChannelIsNotWaitedForLonger) {
  test::InOwnProcess([] {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(dup2(ends[0], 3), 3);
    ASSERT_EQ(fcntl(3, F_GETFL) & O_NONBLOCK, 0);
    PrepareBackChannel();
    const Clock::time_point start = Clock::now();
    PrinterStatusRecord read;
    EXPECT_EQ(ReadBackChannel(read, 0.1), -1);
    EXPECT_LT(SecondsSince(start), 1.0);
  });
}

TEST(ReadBackChannelTest, ACancelEndsTheWait) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    const test::BackChannel channel;
    test::CancelIn(50);
    const Clock::time_point start = Clock::now();
    PrinterStatusRecord read;
    EXPECT_EQ(ReadBackChannel(read, 20.0), -1);
    EXPECT_LT(SecondsSince(start), 5.0);
  });
}

TEST(ReadBackChannelTest, ACancelledJobReadsWhatIsThere) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    raise(SIGTERM);
    const test::BackChannel channel;
    channel.Send(std::array<uint8_t, 2>{1, 2});
    const Clock::time_point start = Clock::now();
    PrinterStatusRecord read;
    EXPECT_EQ(ReadBackChannel(read, 20.0), 2);
    EXPECT_EQ(ReadBackChannel(read, 20.0), -1);
    EXPECT_LT(SecondsSince(start), 5.0);
  });
}

TEST(ReadBackChannelTest, ACancelledJobDoesNotWaitAtAClosedChannel) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    raise(SIGTERM);
    close(3);
    PrepareBackChannel();
    const Clock::time_point start = Clock::now();
    PrinterStatusRecord read;
    EXPECT_EQ(ReadBackChannel(read, 20.0), -1);
    WaitForLastRecord(20.0);
    EXPECT_LT(SecondsSince(start), 5.0);
  });
}

}  // namespace
}  // namespace zr7700
