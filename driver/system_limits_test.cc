// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/system_limits.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <new>
#include <string_view>
#include <thread>

#include "base/printer_output.h"
#include "base/standard_error.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

using ::testing::ElementsAre;

constexpr char kOneLine[] = "^ERROR: There is no memory for the job[^\n]*\n$";

// More than any machine has. A checker's own memory functions know no handler.
void AskForTooMuch() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  EndJobWithoutMemory();
#endif
  volatile size_t bytes = SIZE_MAX / 4;
  ::operator delete(::operator new(bytes));
}

TEST(SystemLimits, AJobWithoutMemoryEndsWithOneLine) {
  const test::LogCapture log;
  EXPECT_EXIT(
      {
        PrepareForSystemLimits();
        AskForTooMuch();
      },
      testing::ExitedWithCode(1), kOneLine);
  EXPECT_THAT(log.Lines(), ElementsAre("     Out of memory: the job ends here"));
}

TEST(SystemLimits, AnyThreadMayFindThatThereIsNoMemory) {
  EXPECT_EXIT(
      {
        PrepareForSystemLimits();
        std::thread one(AskForTooMuch);
        std::thread other(AskForTooMuch);
        one.join();
        other.join();
      },
      testing::ExitedWithCode(1), kOneLine);
}

TEST(SystemLimits, TheLineBeginsALine) {
  EXPECT_EXIT(
      {
        PrepareForSystemLimits();
        BeginLineToCups("     PAGE: 1 1");
        AskForTooMuch();
      },
      testing::ExitedWithCode(1), "^     PAGE: 1 1\nERROR: [^\n]*\n$");
}

TEST(SystemLimits, WhatWasWrittenBeforeGoesOut) {
  const test::TemporaryFolder folder;
  const std::string path = folder.PathOf("out");
  EXPECT_EXIT(
      {
        PrepareForSystemLimits();
        stdout = freopen(path.c_str(), "w", stdout);
        constexpr std::string_view kPage = "the last page";
        WritePrinterOutput({reinterpret_cast<const uint8_t*>(kPage.data()), kPage.size()});
        AskForTooMuch();
      },
      testing::ExitedWithCode(1), kOneLine);
  EXPECT_EQ(test::ReadFile(path), "the last page");
}

TEST(SystemLimits, AFileThatMayNotGrowIsAnError) {
  const test::TemporaryFolder folder;
  const std::string path = folder.PathOf("file");
  EXPECT_EXIT(
      {
        PrepareForSystemLimits();
        rlimit none{};
        setrlimit(RLIMIT_FSIZE, &none);
        const int file = open(path.c_str(), O_WRONLY | O_CREAT, 0600);
        const bool refused = write(file, "x", 1) < 0 && errno == EFBIG;
        _exit(refused ? 0 : 2);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace zr7700
