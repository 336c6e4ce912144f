// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/settings.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

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

TEST_F(SettingsTest, NumberReaderTellsWhetherTheKeyWasThere) {
  Write(Dictionary("<key>Here</key><integer>5</integer>"));
  int32_t value = 77;
  EXPECT_FALSE(ReadNumberSetting(path_.c_str(), "There", value));
  EXPECT_EQ(value, 77);
  EXPECT_TRUE(ReadNumberSetting(path_.c_str(), "Here", value));
  EXPECT_EQ(value, 5);
}

TEST_F(SettingsTest, NumberReaderFindsNothingWithoutAList) {
  int32_t value = 77;
  EXPECT_FALSE(ReadNumberSetting(path_.c_str(), "Here", value));
  Write("<array></array>");
  EXPECT_FALSE(ReadNumberSetting(path_.c_str(), "Here", value));
  EXPECT_EQ(value, 77);
}

TEST_F(SettingsTest, NumberReaderFindsAValueOfAnotherTypeAndLeavesTheNumber) {
  Write(Dictionary("<key>Here</key><string>5</string>"));
  int32_t value = 77;
  EXPECT_TRUE(ReadNumberSetting(path_.c_str(), "Here", value));
  EXPECT_EQ(value, 77);
}

TEST_F(SettingsTest, NumberReaderReadsTheFileAnew) {
  int32_t value = 0;
  Write(Dictionary("<key>Here</key><integer>1</integer>"));
  ReadNumberSetting(path_.c_str(), "Here", value);
  Write(Dictionary("<key>Here</key><integer>2</integer>"));
  ReadNumberSetting(path_.c_str(), "Here", value);
  EXPECT_EQ(value, 2);
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

TEST_F(SettingsTest, WriterChangesAKey) {
  Write(
      Dictionary("<key>FeedAdjust</key><integer>1</integer><key>Other</key>"
                 "<string>stays</string>"));
  EXPECT_TRUE(WriteNumberSetting(path_.c_str(), "FeedAdjust", -1234));
  int32_t value = 0;
  EXPECT_TRUE(ReadNumberSetting(path_.c_str(), "FeedAdjust", value));
  EXPECT_EQ(value, -1234);
  char buffer[32] = "";
  EXPECT_TRUE(ReadStringSetting(path_.c_str(), "Other", buffer, sizeof buffer));
  EXPECT_STREQ(buffer, "stays");
  EXPECT_EQ(test::ReadFile(path_).substr(0, 5), "<?xml");
}

TEST_F(SettingsTest, WriterAddsAKey) {
  Write(Dictionary(""));
  EXPECT_TRUE(WriteNumberSetting(path_.c_str(), "New", 8));
  int32_t value = 0;
  EXPECT_TRUE(ReadNumberSetting(path_.c_str(), "New", value));
  EXPECT_EQ(value, 8);
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
