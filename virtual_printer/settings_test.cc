// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/settings.h"

#include <gtest/gtest.h>

namespace zr7700::printer {
namespace {

TEST(Settings, NamesAreSet) {
  Settings settings;
  std::string error;
  EXPECT_TRUE(SetByName("out", "/srv", settings, error));
  EXPECT_TRUE(SetByName("discs", "0", settings, error));
  EXPECT_TRUE(SetByName("rate", "1000", settings, error));
  EXPECT_TRUE(SetByName("cartridge", "none", settings, error));
  EXPECT_EQ(settings.out, "/srv");
  EXPECT_EQ(settings.discs, 0u);
  EXPECT_EQ(settings.rate_per_s, 1000u);
  EXPECT_EQ(settings.cartridge, 0x20);
}

TEST(Settings, WrongTextsAreNamed) {
  Settings settings;
  std::string error;
  EXPECT_FALSE(SetByName("discs", "1000001", settings, error));
  EXPECT_EQ(error, "\"discs\" takes a number from 0 to 1000000, not \"1000001\".");
  EXPECT_FALSE(SetByName("out", "", settings, error));
  EXPECT_EQ(error, "\"out\" takes a folder, not \"\".");
  EXPECT_FALSE(SetByName("speed", "1", settings, error));
  EXPECT_EQ(error, "There is no setting \"speed\".");
}

}  // namespace
}  // namespace zr7700::printer
