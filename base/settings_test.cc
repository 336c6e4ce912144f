// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "tests/support/log_capture.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

constexpr char kHead[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">";

class SettingsTest : public ::testing::Test {
 protected:
  SettingsTest() { settings = Settings(); }
  ~SettingsTest() override { settings = Settings(); }

  // A list whose root is this XML.
  void Write(const std::string& root) const {
    folder_.WriteFile("settings.plist", kHead + root + "</plist>\n");
  }

  static std::string Dictionary(const std::string& content) {
    return "<dict>" + content + "</dict>";
  }

  static void ExpectDefaults() {
    EXPECT_EQ(settings.LeftMarginOffset, 0);
    EXPECT_EQ(settings.TopMarginOffset, 0);
    EXPECT_EQ(settings.TopMarginOffsetHeron, 0);
    EXPECT_EQ(settings.LeftMarginOffsetHeron, 0);
    EXPECT_EQ(settings.LeftMarginOffsetHeronHighQuality, 0);
    EXPECT_EQ(settings.ImageSharpeningLevel, 11);
    EXPECT_EQ(settings.RunComp, 1);
    EXPECT_EQ(settings.RunCompDiv, 3000);
    EXPECT_EQ(settings.dwStatusFrequency, 50);
    EXPECT_EQ(settings.FeedAdjust, -1900);
    EXPECT_EQ(settings.OutputDest, 1);
  }

  test::TemporaryFolder folder_;
  const std::string path_ = folder_.PathOf("settings.plist");
};

TEST_F(SettingsTest, WithoutAFileAllAreDefaults) {
  ReadSettings(path_.c_str());
  ExpectDefaults();
}

TEST_F(SettingsTest, EveryKeySetsItsOwnSetting) {
  std::string content;
  int value = 101;
  for (const char* key :
       {"LeftMarginOffset", "TopMarginOffset", "TopMarginOffsetHeron", "LeftMarginOffsetHeron",
        "LeftMarginOffsetHeronHighQuality", "ImageSharpeningLevel", "RunComp", "RunCompDiv",
        "dwStatusFrequency", "FeedAdjust", "OutputDest"}) {
    content +=
        std::string("<key>") + key + "</key><integer>" + std::to_string(value++) + "</integer>";
  }
  Write(Dictionary(content));
  ReadSettings(path_.c_str());
  EXPECT_EQ(settings.LeftMarginOffset, 101);
  EXPECT_EQ(settings.TopMarginOffset, 102);
  EXPECT_EQ(settings.TopMarginOffsetHeron, 103);
  EXPECT_EQ(settings.LeftMarginOffsetHeron, 104);
  EXPECT_EQ(settings.LeftMarginOffsetHeronHighQuality, 105);
  EXPECT_EQ(settings.ImageSharpeningLevel, 106);
  EXPECT_EQ(settings.RunComp, 107);
  EXPECT_EQ(settings.RunCompDiv, 108);
  EXPECT_EQ(settings.dwStatusFrequency, 109);
  EXPECT_EQ(settings.FeedAdjust, 110);
  EXPECT_EQ(settings.OutputDest, 111);
}

TEST_F(SettingsTest, OneKeyLeavesTheOthersAtTheirDefaults) {
  Write(Dictionary("<key>FeedAdjust</key><integer>-1800</integer>"));
  ReadSettings(path_.c_str());
  EXPECT_EQ(settings.FeedAdjust, -1800);
  settings.FeedAdjust = -1900;
  ExpectDefaults();
}

TEST_F(SettingsTest, UnknownKeysAreIgnored) {
  Write(
      Dictionary("<key>Version</key><string>9</string><key>feedadjust</key>"
                 "<integer>5</integer>"));
  ReadSettings(path_.c_str());
  ExpectDefaults();
}

TEST_F(SettingsTest, AFileThatIsNoPropertyListLeavesTheDefaults) {
  folder_.WriteFile("settings.plist", "FeedAdjust = -1800\n");
  ReadSettings(path_.c_str());
  ExpectDefaults();
}

TEST_F(SettingsTest, AnEmptyFileLeavesTheDefaults) {
  folder_.WriteFile("settings.plist", "");
  ReadSettings(path_.c_str());
  ExpectDefaults();
}

TEST_F(SettingsTest, ARootThatIsNoDictionaryLeavesTheDefaults) {
  for (const char* root :
       {"<array><integer>1</integer></array>", "<integer>7</integer>", "<string>x</string>"}) {
    Write(root);
    ReadSettings(path_.c_str());
    ExpectDefaults();
  }
}

TEST_F(SettingsTest, AValueThatIsNoNumberLeavesTheDefault) {
  Write(
      Dictionary("<key>FeedAdjust</key><string>-1800</string><key>RunComp</key><dict></dict>"
                 "<key>OutputDest</key><array></array>"));
  ReadSettings(path_.c_str());
  ExpectDefaults();
}

TEST_F(SettingsTest, NumbersAreSigned) {
  Write(
      Dictionary("<key>RunCompDiv</key><integer>-2147483648</integer>"
                 "<key>RunComp</key><integer>2147483647</integer>"));
  ReadSettings(path_.c_str());
  EXPECT_EQ(settings.RunCompDiv, -2147483647 - 1);
  EXPECT_EQ(settings.RunComp, 2147483647);
}

TEST_F(SettingsTest, EveryReadingReadsTheFileAnew) {
  Write(Dictionary("<key>FeedAdjust</key><integer>1</integer>"));
  ReadSettings(path_.c_str());
  Write(Dictionary("<key>FeedAdjust</key><integer>2</integer>"));
  ReadSettings(path_.c_str());
  EXPECT_EQ(settings.FeedAdjust, 2);
}

TEST_F(SettingsTest, StringReaderHandsOutUtf8) {
  Write(
      Dictionary("<key>Name</key><string>Dr\xC3\xBC"
                 "ck</string>"));
  char buffer[32] = "before";
  EXPECT_TRUE(ReadStringSetting(path_.c_str(), "Name", buffer, sizeof buffer));
  EXPECT_STREQ(buffer,
               "Dr\xC3\xBC"
               "ck");
}

TEST_F(SettingsTest, StringReaderSaysYesToAMissingKey) {
  Write(Dictionary(""));
  char buffer[32] = "before";
  EXPECT_TRUE(ReadStringSetting(path_.c_str(), "Name", buffer, sizeof buffer));
  EXPECT_STREQ(buffer, "before");
}

TEST_F(SettingsTest, StringReaderSaysNoWithoutAList) {
  char buffer[32] = "before";
  EXPECT_FALSE(ReadStringSetting(path_.c_str(), "Name", buffer, sizeof buffer));
  folder_.WriteFile("settings.plist", "rubbish");
  EXPECT_FALSE(ReadStringSetting(path_.c_str(), "Name", buffer, sizeof buffer));
  EXPECT_STREQ(buffer, "before");
}

TEST_F(SettingsTest, StringReaderNeverWritesBeyondItsBuffer) {
  Write(Dictionary("<key>Name</key><string>12345678</string>"));
  char buffer[16];
  memset(buffer, '#', sizeof buffer);
  EXPECT_TRUE(ReadStringSetting(path_.c_str(), "Name", buffer, 8));  // 8 and a NUL do not fit
  EXPECT_EQ(std::string(buffer + 8, 8), "########");
  EXPECT_TRUE(ReadStringSetting(path_.c_str(), "Name", buffer, 9));
  EXPECT_STREQ(buffer, "12345678");
  EXPECT_TRUE(ReadStringSetting(path_.c_str(), "Name", buffer, 0));
  EXPECT_STREQ(buffer, "12345678");
}

TEST_F(SettingsTest, WhatIsNoReadableFileLeavesTheDefaults) {
  namespace fs = std::filesystem;
  const auto expect_defaults = [this] {
    ReadSettings(path_.c_str());
    ExpectDefaults();
    EXPECT_FALSE(WriteNumberSetting(path_.c_str(), "FeedAdjust", 1));
  };
  fs::create_directory(path_);
  expect_defaults();
  fs::remove(path_);
  ASSERT_EQ(mkfifo(path_.c_str(), 0666), 0);
  expect_defaults();
  fs::remove(path_);
  for (const std::string& target : {std::string("/dev/zero"), path_}) {
    fs::create_symlink(target, path_);
    expect_defaults();
    fs::remove(path_);
  }
  fs::permissions(folder_.path(), fs::perms(0755));
  Write(Dictionary("<key>FeedAdjust</key><integer>-1800</integer>"));
  chmod(path_.c_str(), 0);
  const test::OrdinaryUser user;
  expect_defaults();
}

TEST_F(SettingsTest, AFileOfSixteenMebibytesIsReadAndNoLongerOne) {
  Write(Dictionary("<key>FeedAdjust</key><integer>-1800</integer>"));
  const std::string list = test::ReadFile(path_);
  folder_.WriteFile("settings.plist", list + std::string((16 << 20) - list.size(), '\n'));
  ReadSettings(path_.c_str());
  EXPECT_EQ(settings.FeedAdjust, -1800);
  settings = Settings();
  folder_.WriteFile("settings.plist", list + std::string((16 << 20) - list.size() + 1, '\n'));
  ReadSettings(path_.c_str());
  ExpectDefaults();
  std::filesystem::resize_file(path_, uintmax_t{1} << 33);
  ReadSettings(path_.c_str());
  ExpectDefaults();
}

TEST_F(SettingsTest, ALinkToAFileIsFollowed) {
  Write(Dictionary("<key>FeedAdjust</key><integer>-1800</integer>"));
  const std::string link = folder_.PathOf("link");
  std::filesystem::create_symlink("settings.plist", link);
  ReadSettings(link.c_str());
  EXPECT_EQ(settings.FeedAdjust, -1800);
}

TEST_F(SettingsTest, LogListsThemWithTheirLabels) {
  const test::LogCapture log;
  settings.FeedAdjust = -1800;
  settings.LeftMarginOffsetHeronHighQuality = 5;
  settings.OutputDest = 258;
  LogSettings();
  EXPECT_THAT(log.Lines(),
              testing::ElementsAre("-----  Settings  --------", "   LeftMarginOffset: 0",
                                   "   LeftMarginOffsetHeron: 0", "   LeftMarginOffsetHeronHQ: 5",
                                   "   TopMarginOffset: 0", "   TopMarginOffsetHeron: 0",
                                   "   ImageSharpeningLevel: 11", "   RunCompDiv: 3000",
                                   "   RunComp: 1", "   StatusFrequency: 50",
                                   "   Feed Adjust: -1800", "---------------------------"));
}

TEST_F(SettingsTest, WriterChangesAKey) {
  Write(
      Dictionary("<key>FeedAdjust</key><integer>1</integer><key>Other</key>"
                 "<string>stays</string>"));
  EXPECT_TRUE(WriteNumberSetting(path_.c_str(), "FeedAdjust", -1234));
  ReadSettings(path_.c_str());
  EXPECT_EQ(settings.FeedAdjust, -1234);
  char buffer[32] = "";
  EXPECT_TRUE(ReadStringSetting(path_.c_str(), "Other", buffer, sizeof buffer));
  EXPECT_STREQ(buffer, "stays");
  EXPECT_EQ(test::ReadFile(path_).substr(0, 5), "<?xml");
}

TEST_F(SettingsTest, WriterAddsAKey) {
  Write(Dictionary(""));
  EXPECT_TRUE(WriteNumberSetting(path_.c_str(), "RunComp", 8));
  ReadSettings(path_.c_str());
  EXPECT_EQ(settings.RunComp, 8);
}

TEST_F(SettingsTest, AFailedWriteBackLeavesTheOldListAndIsNotReported) {
  Write(Dictionary("<key>FeedAdjust</key><integer>1</integer>"));
  const std::string before = test::ReadFile(path_);
  chmod(folder_.path().c_str(), 0555);
  {
    const test::OrdinaryUser user;  // who cannot make a new file beside the old one
    EXPECT_TRUE(WriteNumberSetting(path_.c_str(), "FeedAdjust", 5));
  }
  chmod(folder_.path().c_str(), 0755);
  EXPECT_EQ(test::ReadFile(path_), before);
}

TEST_F(SettingsTest, WriterNeedsAList) {
  EXPECT_FALSE(WriteNumberSetting(path_.c_str(), "New", 8));
  EXPECT_EQ(test::ReadFile(path_), "");
  folder_.WriteFile("settings.plist", "rubbish");
  EXPECT_FALSE(WriteNumberSetting(path_.c_str(), "New", 8));
  EXPECT_EQ(test::ReadFile(path_), "rubbish");
}

}  // namespace
}  // namespace zr7700
