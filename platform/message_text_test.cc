// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/child_text.h"
#include "platform/platform.h"

namespace zr7700::platform {
namespace {

namespace fs = std::filesystem;

constexpr char kKey[] = "Out of discs: %s";
constexpr char kGerman[] = "de ä: %s";
constexpr char kFrench[] = "fr ä: %s";

// Catalogues for German and French in a folder of the test's own. Where translations come from the
// program's bundle the build has put the same two there, and no message compiler is named.
class MessageTextTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG", "LANGUAGE"}) unsetenv(name);
    char pattern[] = "/tmp/message_text_test.XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    folder_ = pattern;
    if (*ZR7700_MESSAGE_COMPILER != '\0') {
      Compile("de", kGerman);
      Compile("fr", kFrench);
    }
    UseMessageCatalogue("discs", folder_.c_str());
  }

  void TearDown() override { fs::remove_all(folder_); }

  void Compile(const std::string& language, const std::string& text) {
    const std::string folder = folder_ + "/" + language + "/LC_MESSAGES";
    fs::create_directories(folder);
    std::ofstream(folder + "/discs.po")
        << "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n\nmsgid \"" << kKey
        << "\"\nmsgstr \"" << text << "\"\n";
    const std::string command =
        ZR7700_MESSAGE_COMPILER " -o " + folder + "/discs.mo " + folder + "/discs.po";
    ASSERT_EQ(system(command.c_str()), 0);
  }

  // The text in `language`, told by a process of its own, since a bundle keeps to the language
  // that it was first asked for.
  static std::string TextIn(const char* language, const char* key = kKey) {
    return TextOfChild([language, key] {
      if (language != nullptr) SetMessageLanguage(language);
      return LocalizedText(key).value_or("nothing");
    });
  }

  std::string folder_;
};

TEST_F(MessageTextTest, FollowsTheLanguageWithoutSuchALocale) {
  EXPECT_EQ(TextIn("de"), kGerman);
  EXPECT_EQ(TextIn("fr"), kFrench);
}

TEST_F(MessageTextTest, TakesLocaleNames) {
  EXPECT_EQ(TextIn("de_DE.UTF-8"), kGerman);
  EXPECT_EQ(TextIn("de_AT"), kGerman);
  EXPECT_EQ(TextIn("fr_CA.ISO-8859-1"), kFrench);
}

TEST_F(MessageTextTest, TakesLanguageTags) {
  EXPECT_EQ(TextIn("de-DE"), kGerman);
  EXPECT_EQ(TextIn("de-Latn-AT"), kGerman);
  EXPECT_EQ(TextIn("fr-CA.UTF-8"), kFrench);
  EXPECT_EQ(TextIn("-"), kKey);
}

TEST_F(MessageTextTest, IsEnglishInThePlainLocales) {
  for (const char* language : {"C", "C.UTF-8", "POSIX", "en", "en_GB.UTF-8", ""}) {
    EXPECT_EQ(TextIn(language), kKey) << language;
  }
}

TEST_F(MessageTextTest, IsEnglishInALanguageWithoutTranslation) {
  EXPECT_EQ(TextIn("xx_YY.UTF-8"), kKey);
  EXPECT_EQ(TextIn("not a language: \xff%n"), kKey);
  EXPECT_EQ(TextIn(std::string(10000, 'd').c_str()), kKey);
}

TEST_F(MessageTextTest, IsEnglishWhenNoLanguageWasSet) { EXPECT_EQ(TextIn(nullptr), kKey); }

TEST_F(MessageTextTest, NeverLeavesTheFolderOfTheTranslations) {
  fs::create_directory(folder_ + "/inner");
  UseMessageCatalogue("discs", "/nonexistent");
  EXPECT_EQ(TextIn((".." + folder_ + "/de").c_str()), kKey);
}

TEST_F(MessageTextTest, GivesTheLanguageMoreWeightThanTheEnvironment) {
  setenv("LC_ALL", "C", 1);
  setenv("LANG", "fr_FR.UTF-8", 1);
  EXPECT_EQ(TextIn("de"), kGerman);
}

TEST_F(MessageTextTest, GivesBackAnUntranslatedKeyAsItIs) {
  EXPECT_EQ(TextIn("de", "No such text"), "No such text");
  EXPECT_EQ(TextIn("de", ""), "");
}

TEST_F(MessageTextTest, KeepsErrno) {
  SetMessageLanguage("de");
  errno = ENOENT;
  EXPECT_EQ(LocalizedText(kKey), kGerman);
  EXPECT_EQ(errno, ENOENT);
  errno = EACCES;
  EXPECT_EQ(LocalizedText("No such text"), "No such text");
  EXPECT_EQ(errno, EACCES);
}

TEST_F(MessageTextTest, LetsTheEnvironmentDecideTheMessageLocale) {
  setenv("LC_ALL", "C.UTF-8", 1);
  SetMessageLanguage("de");
  EXPECT_STREQ(setlocale(LC_MESSAGES, nullptr), "C.UTF-8");
}

}  // namespace
}  // namespace zr7700::platform
