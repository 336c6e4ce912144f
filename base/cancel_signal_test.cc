// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/cancel_signal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <functional>
#include <thread>

#include "tests/support/later_cancel.h"
#include "tests/support/own_process.h"
#include "tests/support/signal_storm.h"

namespace zr7700 {
namespace {

using std::chrono::milliseconds;

// A pipe whose ends are closed with the object.
struct Pipe {
  Pipe() { EXPECT_EQ(pipe(ends), 0); }
  ~Pipe() {
    close(ends[0]);
    CloseWriteEnd();
  }
  void CloseWriteEnd() {
    if (ends[1] >= 0) close(ends[1]);
    ends[1] = -1;
  }
  int ends[2] = {-1, -1};
};

TEST(CancelHandler, WithoutItSigtermEndsTheProcess) {
  const pid_t child = fork();
  if (child == 0) {
    raise(SIGTERM);
    _exit(0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

TEST(CancelHandler, NotesTheSignalAndReturns) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    EXPECT_FALSE(CancelRequested());
    raise(SIGTERM);
    EXPECT_TRUE(CancelRequested());
  });
}

TEST(CancelHandler, TakesTheSignalAgainAndAgain) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    // More often than any pipe holds bytes: the handler must never block.
    for (int i = 0; i < 100'000; i++) raise(SIGTERM);
    EXPECT_TRUE(CancelRequested());
  });
}

TEST(CancelHandler, KeepsErrno) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    for (int i = 0; i < 70'000; i++) {
      errno = EDOM;
      raise(SIGTERM);
      ASSERT_EQ(errno, EDOM);
    }
  });
}

TEST(WaitForInputTest, TellsOfInput) {
  Pipe pipe;
  ASSERT_EQ(write(pipe.ends[1], "x", 1), 1);
  EXPECT_TRUE(WaitForInput(pipe.ends[0]));
}

TEST(WaitForInputTest, WaitsForInput) {
  Pipe pipe;
  std::thread writer([&] {
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_EQ(write(pipe.ends[1], "x", 1), 1);
  });
  EXPECT_TRUE(WaitForInput(pipe.ends[0]));
  writer.join();
}

TEST(WaitForInputTest, TellsOfTheEnd) {
  Pipe pipe;
  pipe.CloseWriteEnd();
  EXPECT_TRUE(WaitForInput(pipe.ends[0]));
}

TEST(WaitForInputTest, TakesAFileForReadable) {
  const int file = open("/dev/null", O_RDONLY);
  EXPECT_TRUE(WaitForInput(file));
  close(file);
}

TEST(WaitForInputTest, DoesNotHangOnAClosedDescriptor) {
  const int closed = open("/dev/null", O_RDONLY);
  close(closed);
  EXPECT_TRUE(WaitForInput(closed));
}

TEST(WaitForInputTest, ACancelWakesIt) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    const Pipe pipe;
    test::CancelIn(50);
    EXPECT_FALSE(WaitForInput(pipe.ends[0]));
    EXPECT_TRUE(CancelRequested());
  });
}

TEST(WaitForInputTest, ACancelThatAnotherThreadTakesWakesItToo) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    const Pipe pipe;
    std::thread([] {
      std::this_thread::sleep_for(milliseconds(50));
      raise(SIGTERM);
    }).detach();
    EXPECT_FALSE(WaitForInput(pipe.ends[0]));
  });
}

TEST(WaitForInputTest, ACancelThatCameBeforeEndsItAtOnceEvenWithInput) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    raise(SIGTERM);
    Pipe pipe;
    ASSERT_EQ(write(pipe.ends[1], "x", 1), 1);
    EXPECT_FALSE(WaitForInput(pipe.ends[0]));
    EXPECT_FALSE(WaitForInput(pipe.ends[0]));
  });
}

TEST(WaitForInputTest, IsNotWokenByOtherSignals) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    signal(SIGUSR1, [](int) {});
    Pipe pipe;
    const auto start = std::chrono::steady_clock::now();
    std::thread sender([&pipe, main = pthread_self()] {
      std::this_thread::sleep_for(milliseconds(30));
      pthread_kill(main, SIGUSR1);
      std::this_thread::sleep_for(milliseconds(30));
      EXPECT_EQ(write(pipe.ends[1], "x", 1), 1);
    });
    EXPECT_TRUE(WaitForInput(pipe.ends[0]));
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(50));
    sender.join();
  });
}

TEST(CancelHandler, CallsWhatIsToBeDoneAtOnce) {
  test::InOwnProcess([] {
    static volatile sig_atomic_t calls = 0;
    InstallCancelHandler([] { calls = calls + 1; });
    EXPECT_EQ(calls, 0);
    raise(SIGTERM);
    EXPECT_EQ(calls, 1);
  });
}

double SecondsOf(const std::function<void()>& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(WaitWithALimit, TellsOfInput) {
  Pipe pipe;
  ASSERT_EQ(write(pipe.ends[1], "x", 1), 1);
  EXPECT_EQ(WaitForInput(pipe.ends[0], 0), WaitEnd::kReady);
  EXPECT_EQ(WaitForInput(pipe.ends[0], 10'000), WaitEnd::kReady);
}

TEST(WaitWithALimit, EndsWithTheLimit) {
  const Pipe pipe;
  const double waited_s =
      SecondsOf([&] { EXPECT_EQ(WaitForInput(pipe.ends[0], 200), WaitEnd::kTimeOver); });
  EXPECT_GE(waited_s, 0.2);
  EXPECT_LT(waited_s, 1.0);
}

TEST(WaitWithALimit, ADescriptorBelowZeroNeverHasInput) {
  EXPECT_EQ(WaitForInput(-1, 1), WaitEnd::kTimeOver);
}

TEST(WaitWithALimit, OtherSignalsNeitherEndNorLengthenIt) {
  test::InOwnProcess([] {
    const Pipe pipe;
    const test::SignalStorm storm;
    const double waited_s =
        SecondsOf([&] { EXPECT_EQ(WaitForInput(pipe.ends[0], 300), WaitEnd::kTimeOver); });
    EXPECT_GE(waited_s, 0.3);
    EXPECT_LT(waited_s, 1.0);
    EXPECT_GT(test::SignalStorm::Count(), 20);
  });
}

TEST(WaitWithALimit, ACancelEndsIt) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    const Pipe pipe;
    test::CancelIn(50);
    EXPECT_LT(
        SecondsOf([&] { EXPECT_EQ(WaitForInput(pipe.ends[0], 20'000), WaitEnd::kCancelled); }),
        5.0);
    EXPECT_EQ(WaitForInput(pipe.ends[0], 20'000), WaitEnd::kCancelled);
  });
}

TEST(WaitForLastInputTest, GoesOnAfterACancel) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    raise(SIGTERM);
    Pipe pipe;
    EXPECT_GE(SecondsOf([&] { EXPECT_FALSE(WaitForLastInput(pipe.ends[0], 200)); }), 0.2);
    ASSERT_EQ(write(pipe.ends[1], "x", 1), 1);
    EXPECT_TRUE(WaitForLastInput(pipe.ends[0], 20'000));
  });
}

// Puts as much into the pipe as it takes.
void Fill(const Pipe& pipe) {
  fcntl(pipe.ends[1], F_SETFL, O_NONBLOCK);
  const char bytes[4096] = {};
  while (write(pipe.ends[1], bytes, sizeof bytes) > 0) {
  }
}

TEST(WaitForTakerTest, WaitsForAReaderAfterACancelToo) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    const Pipe pipe;
    Fill(pipe);
    test::CancelIn(50);
    std::thread reader([&pipe] {
      std::this_thread::sleep_for(milliseconds(300));
      char bytes[4096];
      EXPECT_EQ(read(pipe.ends[0], bytes, sizeof bytes), ssize_t{sizeof bytes});
    });
    EXPECT_GE(SecondsOf([&] { EXPECT_TRUE(WaitForTaker(pipe.ends[1])); }), 0.25);
    reader.join();
    EXPECT_TRUE(CancelRequested());
  });
}

TEST(WaitForTakerTest, GivesUpTwentySecondsAfterTheCancel) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    const Pipe pipe;
    Fill(pipe);
    raise(SIGTERM);
    const double waited_s = SecondsOf([&] { EXPECT_FALSE(WaitForTaker(pipe.ends[1])); });
    EXPECT_GE(waited_s, 19.9);
    EXPECT_LT(waited_s, 21.5);
    // The time is counted from the cancel, not from the call.
    EXPECT_LT(SecondsOf([&] { EXPECT_FALSE(WaitForTaker(pipe.ends[1])); }), 1.0);
  });
}

TEST(CancelBlockTest, HoldsTheSignalBackWhileItLives) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    {
      const CancelBlock block;
      raise(SIGTERM);
      EXPECT_FALSE(CancelRequested());
    }
    EXPECT_TRUE(CancelRequested());
  });
}

TEST(CancelBlockTest, IsInheritedByThreadsStartedMeanwhile) {
  int blocked = -1;
  std::thread thread;
  {
    const CancelBlock block;
    thread = std::thread([&] {
      sigset_t mask;
      pthread_sigmask(SIG_SETMASK, nullptr, &mask);
      blocked = sigismember(&mask, SIGTERM);
    });
  }
  thread.join();
  EXPECT_EQ(blocked, 1);
}

TEST(CancelBlockTest, LeavesOtherSignalsAndAnEarlierMaskAlone) {
  sigset_t usr1;
  sigemptyset(&usr1);
  sigaddset(&usr1, SIGUSR1);
  pthread_sigmask(SIG_BLOCK, &usr1, nullptr);
  sigset_t mask;
  {
    const CancelBlock block;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGINT), 0);
  }
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  EXPECT_EQ(sigismember(&mask, SIGUSR1), 1);
  EXPECT_EQ(sigismember(&mask, SIGTERM), 0);
  pthread_sigmask(SIG_UNBLOCK, &usr1, nullptr);
}

}  // namespace
}  // namespace zr7700
