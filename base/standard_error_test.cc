// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/standard_error.h"

#include <gtest/gtest.h>

namespace zr7700 {
namespace {

std::string Captured(void (*write)()) {
  testing::internal::CaptureStderr();
  write();
  return testing::internal::GetCapturedStderr();
}

TEST(StandardError, WritesTextsAsTheyAre) {
  EXPECT_EQ(Captured([] { TellCups("STATE: %c%s\n", '-', "media-needed"); }),
            "STATE: -media-needed\n");
}

TEST(StandardError, AnOpenLineIsEndedOnce) {
  EXPECT_EQ(Captured([] {
              BeginLineToCups("     PAGE: %d %d", 1, 2);
              EndLineToCups();
              EndLineToCups();
            }),
            "     PAGE: 1 2\n");
}

TEST(StandardError, TheNextTextEndsAnOpenLine) {
  EXPECT_EQ(Captured([] {
              BeginLineToCups("PAGE");
              TellCups("STATE\n");
              EndLineToCups();
            }),
            "PAGESTATE\n");
}

TEST(StandardError, NoLineIsEndedThatIsNotOpen) { EXPECT_EQ(Captured(EndLineToCups), ""); }

}  // namespace
}  // namespace zr7700
