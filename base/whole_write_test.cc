// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/whole_write.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <functional>
#include <string>
#include <thread>

#include "tests/support/own_process.h"
#include "tests/support/signal_storm.h"

// What the linker puts in the place of write: it asks the test, if there is one, how many of
// `count` bytes are to be written; -1 with errno for a failure.
static std::function<ssize_t(size_t count)> at_write;
extern "C" ssize_t __real_write(int descriptor, const void* bytes, size_t count);
extern "C" ssize_t __wrap_write(int descriptor, const void* bytes, size_t count);

extern "C" ssize_t __wrap_write(int descriptor, const void* bytes, size_t count) {
  const ssize_t wanted = at_write ? at_write(count) : static_cast<ssize_t>(count);
  return wanted < 0 ? -1 : __real_write(descriptor, bytes, static_cast<size_t>(wanted));
}

namespace zr7700 {
namespace {

// No two stretches of it are alike, so that a byte lost or said twice shows.
std::string LongText() {
  std::string text;
  for (int i = 0; text.size() < 400'000; i++) text += std::to_string(i) + ' ';
  return text;
}

// What a reader gets of the text who takes an odd number of bytes now and then.
std::string ThroughAPipe(const std::string& text, int write_flags) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  EXPECT_EQ(fcntl(ends[1], F_SETFL, write_flags), 0);
  std::string taken;
  std::thread reader([&] {
    char piece[3001];
    for (ssize_t count; (count = read(ends[0], piece, sizeof piece)) != 0;) {
      if (count < 0) continue;  // the storm finds this thread too
      taken.append(piece, static_cast<size_t>(count));
      std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
  });
  EXPECT_EQ(WriteWhole(ends[1], text), WriteEnd::kWritten);
  close(ends[1]);
  reader.join();
  close(ends[0]);
  return taken;
}

class WriteWholeTest : public ::testing::Test {
 protected:
  ~WriteWholeTest() override { at_write = nullptr; }
};

TEST_F(WriteWholeTest, WaitsForASlowReader) { EXPECT_EQ(ThroughAPipe(LongText(), 0), LongText()); }

TEST_F(WriteWholeTest, WaitsForASlowReaderOfANonBlockingPipe) {
  EXPECT_EQ(ThroughAPipe(LongText(), O_NONBLOCK), LongText());
}

// Every second write fails so, and the others take less than they are given.
TEST_F(WriteWholeTest, LosesNothingWhenItIsInterruptedOrRefusedForAMoment) {
  for (const int error : {EINTR, EAGAIN, EWOULDBLOCK}) {
    at_write = [error, turn = 0](size_t count) mutable -> ssize_t {
      if (++turn % 2 == 0) return static_cast<ssize_t>(count * 2 / 3 + 1);
      errno = error;
      return -1;
    };
    EXPECT_EQ(ThroughAPipe(LongText(), 0), LongText()) << strerror(error);
  }
}

TEST_F(WriteWholeTest, LosesNothingInAStormOfSignals) {
  test::InOwnProcess([] {
    const test::SignalStorm storm;
    EXPECT_EQ(ThroughAPipe(LongText(), 0), LongText());
    EXPECT_EQ(ThroughAPipe(LongText(), O_NONBLOCK), LongText());
    EXPECT_GT(test::SignalStorm::Count(), 5);
  });
}

// More than a pipe takes at once would block whoever writes it, whatever the pipe has said.
TEST_F(WriteWholeTest, WritesNoMoreAtATimeThanAPipeTakesAtOnce) {
  size_t most = 0;
  at_write = [&most](size_t count) {
    most = std::max(most, count);
    return static_cast<ssize_t>(count);
  };
  EXPECT_EQ(ThroughAPipe(LongText(), 0), LongText());
  EXPECT_EQ(most, size_t{PIPE_BUF});
}

TEST_F(WriteWholeTest, NothingIsWrittenAtOnce) {
  const int closed = dup(0);
  close(closed);
  EXPECT_EQ(WriteWhole(closed, {}), WriteEnd::kWritten);
}

TEST_F(WriteWholeTest, ARealErrorEndsIt) {
  const int full = open("/dev/full", O_WRONLY);
  EXPECT_EQ(WriteWhole(full, std::string("x")), WriteEnd::kRefused);
  close(full);
  EXPECT_EQ(WriteWhole(full, std::string("x")), WriteEnd::kRefused);
}

TEST_F(WriteWholeTest, AReaderThatHasGoneRaisesTheSignalThatEndsAFilter) {
  EXPECT_EXIT(
      {
        int ends[2];
        if (pipe(ends) != 0) _exit(1);
        close(ends[0]);
        WriteWhole(ends[1], std::string("x"));
        _exit(2);
      },
      ::testing::KilledBySignal(SIGPIPE), "");
}

}  // namespace
}  // namespace zr7700
