// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/device_uri.h"

#include <gtest/gtest.h>

namespace zr7700::printer {
namespace {

TEST(DeviceUri, FolderAndDefaults) {
  std::string error;
  const auto settings = ParseDeviceUri("zr7700virtual:/path/to/spool", error);
  ASSERT_TRUE(settings.has_value()) << error;
  EXPECT_EQ(settings->out, "/path/to/spool");
  EXPECT_EQ(settings->cartridge, 'Q');
  EXPECT_EQ(settings->discs, 25u);
  EXPECT_EQ(settings->rate_per_s, 20u);
  EXPECT_EQ(settings->pace_s, 0);
  EXPECT_EQ(ParseDeviceUri("zr7700virtual:///srv/discs", error)->out, "/srv/discs");
}

TEST(DeviceUri, EveryParameter) {
  std::string error;
  const auto settings = ParseDeviceUri(
      "zr7700virtual:/s?cartridge=U&discs=5&script=/a&control=/b&report=/"
      "c&rate=16&pace=2.5s&name=x",
      error);
  ASSERT_TRUE(settings.has_value()) << error;
  EXPECT_EQ(settings->cartridge, 'U');
  EXPECT_EQ(settings->discs, 5u);
  EXPECT_EQ(settings->script, "/a");
  EXPECT_EQ(settings->control, "/b");
  EXPECT_EQ(settings->report, "/c");
  EXPECT_EQ(settings->rate_per_s, 16u);
  EXPECT_EQ(settings->pace_s, 2.5);
  EXPECT_EQ(settings->name, "x");
}

TEST(DeviceUri, PercentEscapesAreDecoded) {
  std::string error;
  const auto settings =
      ParseDeviceUri("zr7700virtual:/my%20discs/50%25%3fnew?script=/a%26b%3D%41%c3%a9", error);
  ASSERT_TRUE(settings.has_value()) << error;
  EXPECT_EQ(settings->out, "/my discs/50%?new");
  EXPECT_EQ(settings->script, "/a&b=A\xC3\xA9");
}

TEST(DeviceUri, WhatIsWrongIsSaid) {
  const struct {
    const char* uri;
    const char* sentence;
  } rows[] = {
      {"", "It must begin with \"zr7700virtual:\"."},
      {"file:/tmp", "It must begin with \"zr7700virtual:\"."},
      {"zr7700virtual",
       "It must name a folder, as in zr7700virtual:/path/to/folder?cartridge=Q&discs=5."},
      {"zr7700virtual:here",
       "It must name a folder, as in zr7700virtual:/path/to/folder?cartridge=Q&discs=5."},
      {"zr7700virtual:/a%2",
       "It must name a folder, as in zr7700virtual:/path/to/folder?cartridge=Q&discs=5."},
      {"zr7700virtual:/a?out=/b", "The folder is its path, not a parameter."},
      {"zr7700virtual:/a?name=x%0Ay",
       "\"name\" takes a name without \"/\" or control characters, not \"x\ny\"."},
      {"zr7700virtual:/a?discs=many", "\"discs\" takes a number from 0 to 1000000, not \"many\"."},
      {"zr7700virtual:/a?discs", "\"discs\" takes a number from 0 to 1000000, not \"\"."},
      {"zr7700virtual:/a?rate=0", "\"rate\" takes a number from 1 to 1000, not \"0\"."},
      {"zr7700virtual:/a?pace=-1", "\"pace\" takes a time such as 2.5s, not \"-1\"."},
      {"zr7700virtual:/a?name=../x",
       "\"name\" takes a name without \"/\" or control characters, not \"../x\"."},
      {"zr7700virtual:/a?colour=red", "There is no setting \"colour\"."},
      {"zr7700virtual:/a?cartridge=W",
       "\"cartridge\" takes Q, P, U, V, none or invalid, not \"W\"."},
      {"zr7700virtual:/a?script=%00", "The value of \"script\" has a broken percent escape."},
      {"zr7700virtual:/a?script=%-1", "The value of \"script\" has a broken percent escape."},
      {"zr7700virtual:/a?script=%zz", "The value of \"script\" has a broken percent escape."},
  };
  for (const auto& row : rows) {
    std::string error;
    EXPECT_FALSE(ParseDeviceUri(row.uri, error).has_value()) << row.uri;
    EXPECT_EQ(error, std::string("The device URI is wrong. ") + row.sentence) << row.uri;
  }
}

}  // namespace
}  // namespace zr7700::printer
