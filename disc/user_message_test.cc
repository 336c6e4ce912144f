// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/user_message.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "tests/support/stream_capture.h"

namespace zr7700 {
namespace {

template <typename Tell>
std::string Told(Tell tell) {
  test::StderrCapture capture;
  tell();
  return capture.Take();
}

TEST(UserMessage, EveryMessageIsALineOfItsOwn) {
  EXPECT_EQ(Told([] { TellError("It is wrong; do this."); }), "\nERROR: It is wrong; do this.\n");
  EXPECT_EQ(Told([] { TellWarning("It is coarse."); }), "\nWARNING: It is coarse.\n");
  EXPECT_EQ(Told([] { TellPage(12, 3); }), "\nPAGE: 12 3\n");
}

TEST(UserMessage, TextFromOutsideMakesNoLines) {
  EXPECT_EQ(Told([] { TellError("a\nERROR: b\r\x1B\x7F\xC3\xBC"); }),
            "\nERROR: a?ERROR: b???\xC3\xBC\n");
}

TEST(UserMessage, LongSentencesAreCut) {
  EXPECT_EQ(Told([] { TellError(std::string(5000, 'x')); }),
            "\nERROR: " + std::string(1900, 'x') + "\n");
}

// Standard error as a pipe.
class ErrorPipe {
 public:
  ErrorPipe() : saved_(dup(STDERR_FILENO)) {
    EXPECT_EQ(pipe2(ends_, O_CLOEXEC), 0);
    dup2(ends_[1], STDERR_FILENO);
  }
  ~ErrorPipe() {
    dup2(saved_, STDERR_FILENO);
    for (const int end : {saved_, ends_[0], ends_[1]}) close(end);
  }
  ErrorPipe(const ErrorPipe&) = delete;
  ErrorPipe& operator=(const ErrorPipe&) = delete;

  std::string Read() const {
    char text[100];
    const ssize_t count = read(ends_[0], text, sizeof text);
    return {text, static_cast<size_t>(count)};
  }

 private:
  int saved_;
  int ends_[2];
};

TEST(UserMessage, AnErrorHasBeenReadBeforeItsTellerGoesOn) {
  const ErrorPipe pipe;
  std::string told;
  std::atomic<bool> is_read = false;
  std::thread reader([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    is_read = true;
    told = pipe.Read();
  });
  TellError("It is wrong.");
  EXPECT_TRUE(is_read);
  reader.join();
  EXPECT_EQ(told, "\nERROR: It is wrong.\n");
}

TEST(UserMessage, AnErrorThatNobodyReadsHoldsItsTellerUpForASecond) {
  const ErrorPipe pipe;
  const auto start = std::chrono::steady_clock::now();
  TellError("It is wrong.");
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(900));
  EXPECT_EQ(pipe.Read(), "\nERROR: It is wrong.\n");
}

}  // namespace
}  // namespace zr7700
