// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/user_message.h"

#include <gtest/gtest.h>

#include <string>

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

}  // namespace
}  // namespace zr7700
