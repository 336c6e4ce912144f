// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/printable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace zr7700 {
namespace {

TEST(Printable, KeepsEverythingButControlBytes) {
  EXPECT_STREQ(Printable("").c_str(), "");
  EXPECT_STREQ(Printable("Disc ~ 120 mm").c_str(), "Disc ~ 120 mm");
  EXPECT_STREQ(Printable("gl\xC3\xA4nzend \x80\xFF").c_str(), "gl\xC3\xA4nzend \x80\xFF");
  EXPECT_STREQ(Printable("a\r\nb\tc\x1B[2Jd\x7F\x01").c_str(), "a??b?c?[2Jd??");
}

TEST(Printable, ReadsNoMoreThan64Bytes) {
  char text[65];
  std::fill_n(text, 64, 'n');
  text[64] = 'x';
  EXPECT_EQ(Printable(text).c_str(), std::string(64, 'n'));
}

}  // namespace
}  // namespace zr7700
