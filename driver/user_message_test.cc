// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/user_message.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/support/stream_capture.h"

namespace zr7700 {
namespace {

std::string Written(const char* prefix, const char* format, const char* argument) {
  test::StderrCapture capture;
  WriteUserMessage(prefix, format, argument);
  return capture.Take();
}

TEST(WriteUserMessageTest, WritesPrefixAndText) {
  EXPECT_EQ(Written("ERROR", "Unable to open PPD file: %s", "No such file or directory"),
            "ERROR: Unable to open PPD file: No such file or directory\n");
}

TEST(WriteUserMessageTest, ATextOf2047BytesIsWritten) {
  const std::string text(2047, 'x');
  EXPECT_EQ(Written("INFO", "%s", text.c_str()), "INFO: " + text + "\n");
}

TEST(WriteUserMessageTest, ATextOf2048BytesIsDropped) {
  EXPECT_EQ(Written("INFO", "%s", std::string(2048, 'x').c_str()), "");
}

TEST(WriteUserMessageTest, TheLimitCountsBytesOfUtf8WithoutThePrefix) {
  std::string text(2045, 'x');
  text += "\xC3\xBC";  // 2047 bytes, 2046 characters
  EXPECT_EQ(Written("A long prefix", "%s", text.c_str()), "A long prefix: " + text + "\n");
  EXPECT_EQ(Written("A long prefix", "%s.", text.c_str()), "");
}

TEST(WriteUserMessageTest, AnArgumentIsNoFormat) {
  EXPECT_EQ(Written("ERROR", "%s", "100 %s %n"), "ERROR: 100 %s %n\n");
}

class SetUpMessageLanguageTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANGUAGE", "LANG", "APPLE_LANGUAGE"}) {
      unsetenv(name);
    }
  }
};

TEST_F(SetUpMessageLanguageTest, MakesStandardErrorUnbuffered) {
  test::StderrCapture capture;
  static char buffer[1024];
  setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
  SetUpMessageLanguage();
  fputs("at once", stderr);
  EXPECT_EQ(capture.Arrived(), "at once");
}

TEST_F(SetUpMessageLanguageTest, WithoutEitherVariableTheLocaleStays) {
  setlocale(LC_ALL, "C");
  setenv("LC_MESSAGES", "C.UTF-8", 1);
  SetUpMessageLanguage();
  EXPECT_STREQ(setlocale(LC_MESSAGES, nullptr), "C");
}

TEST_F(SetUpMessageLanguageTest, WithALanguageTheEnvironmentDecidesTheLocaleOfMessages) {
  setlocale(LC_ALL, "C");
  setenv("LANG", "C.UTF-8", 1);
  SetUpMessageLanguage();
  EXPECT_STREQ(setlocale(LC_MESSAGES, nullptr), "C.UTF-8");
  EXPECT_STREQ(setlocale(LC_NUMERIC, nullptr), "C");
}

}  // namespace
}  // namespace zr7700
