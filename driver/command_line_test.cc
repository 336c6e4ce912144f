// Built with a shared-memory name of its own and catalogues below the current folder.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/command_line.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "status/status_memory.h"
#include "status/test_memory.h"
#include "tests/support/stream_capture.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

constexpr char kPpd[] =
    "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*FileVersion: \"1.0\"\n"
    "*LanguageVersion: English\n*LanguageEncoding: ISOLatin1\n*PCFileName: \"DISC.PPD\"\n"
    "*Manufacturer: \"Tessary\"\n*Product: \"(Disc)\"\n*ModelName: \"Disc\"\n"
    "*ShortNickName: \"Disc\"\n*NickName: \"Disc\"\n*PSVersion: \"(3010.000) 0\"\n"
    "*LanguageLevel: \"3\"\n*ColorDevice: True\n*DefaultColorSpace: RGB\n"
    "*OpenUI *PrintQuality/Quality: PickOne\n*OrderDependency: 10 AnySetup *PrintQuality\n"
    "*DefaultPrintQuality: Normal\n*PrintQuality Normal/Normal: \"\"\n"
    "*PrintQuality Best/Best: \"\"\n*CloseUI: *PrintQuality\n"
    "*OpenUI *PageSize/Media Size: PickOne\n*OrderDependency: 10 AnySetup *PageSize\n"
    "*DefaultPageSize: Disc\n*PageSize Disc/Disc: \"\"\n*CloseUI: *PageSize\n"
    "*OpenUI *PageRegion/Media Size: PickOne\n*OrderDependency: 10 AnySetup *PageRegion\n"
    "*DefaultPageRegion: Disc\n*PageRegion Disc/Disc: \"\"\n*CloseUI: *PageRegion\n"
    "*DefaultImageableArea: Disc\n*ImageableArea Disc/Disc: \"0 0 340 340\"\n"
    "*DefaultPaperDimension: Disc\n*PaperDimension Disc/Disc: \"340 340\"\n";

class CommandLine : public ::testing::Test {
 protected:
  CommandLine() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANGUAGE", "LANG", "APPLE_LANGUAGE"}) {
      unsetenv(name);
    }
    setenv("PPD", folder_.WriteFile("disc.ppd", kPpd).c_str(), 1);
  }
  ~CommandLine() override {
    if (ppd_ != nullptr) ppdClose(ppd_);
    cupsFreeOptions(arguments_.option_count, arguments_.options);
    CloseStatusMemory();
    unsetenv("PPD");
  }

  // Parses these words; what came to standard error stays in told_.
  bool Parse(std::vector<std::string> words) {
    words_ = std::move(words);
    std::vector<char*> argv;
    for (std::string& word : words_) argv.push_back(word.data());
    const int argc = static_cast<int>(argv.size());
    argv.push_back(nullptr);
    test::StderrCapture capture;
    ppd_ = ParseCommandLine(argc, argv.data(), arguments_);
    told_ = capture.Take();
    return ppd_ != nullptr;
  }

  bool ParseOptions(const std::string& options) {
    return Parse({"rastertodisc", "1", "user", "title", "1", options});
  }

  test::MemoryName memory_name_;
  test::TemporaryFolder folder_;
  std::vector<std::string> words_;
  FilterArgs arguments_;
  ppd_file_t* ppd_ = nullptr;
  std::string told_;
};

TEST_F(CommandLine, FillsTheRecord) {
  EXPECT_TRUE(Parse({"rastertodisc", "42", "jane", "My disc", "3", "a=1 b=2 c"}));
  EXPECT_EQ(arguments_.job_id, 42);
  EXPECT_STREQ(arguments_.user, "jane");
  EXPECT_STREQ(arguments_.title, "My disc");
  EXPECT_EQ(arguments_.user, words_[2].data());  // not copied
  EXPECT_EQ(arguments_.title, words_[3].data());
  EXPECT_EQ(arguments_.option_count, 3);
  EXPECT_STREQ(cupsGetOption("b", arguments_.option_count, arguments_.options), "2");
  EXPECT_EQ(told_, "");
}

TEST_F(CommandLine, TakesAFileName) {
  EXPECT_TRUE(Parse({"rastertodisc", "1", "user", "title", "1", "", "/tmp/some.ras"}));
  EXPECT_EQ(arguments_.option_count, 0);
}

TEST_F(CommandLine, JobIdIsReadLikeANumberAtTheBeginning) {
  EXPECT_TRUE(Parse({"f", " -7x", "u", "t", "1", ""}));
  EXPECT_EQ(arguments_.job_id, -7);
}

TEST_F(CommandLine, JobIdThatIsNoNumberIs0) {
  EXPECT_TRUE(Parse({"f", "job", "u", "t", "1", ""}));
  EXPECT_EQ(arguments_.job_id, 0);
}

TEST_F(CommandLine, TooFewArgumentsPrintTheUsage) {
  EXPECT_FALSE(Parse({"/usr/lib/disc", "1", "user", "title", "1"}));
  EXPECT_EQ(told_, "Usage: /usr/lib/disc job user title copies options [filename]\n");
  EXPECT_EQ(arguments_.user, nullptr);
  EXPECT_FALSE(test::LookAtMemory());
}

TEST_F(CommandLine, TooManyArgumentsPrintTheUsage) {
  EXPECT_FALSE(Parse({"disc", "1", "user", "title", "1", "", "file", "more"}));
  EXPECT_EQ(told_, "Usage: disc job user title copies options [filename]\n");
}

TEST_F(CommandLine, NoArgumentsPrintTheUsage) {
  EXPECT_FALSE(Parse({"disc"}));
  EXPECT_EQ(told_, "Usage: disc job user title copies options [filename]\n");
}

struct Flags {
  const char* options;
  bool skip_check;
  bool suppress;
};

class OptionFlags : public CommandLine, public ::testing::WithParamInterface<Flags> {};

TEST_P(OptionFlags, AreSetByExactlyYes) {
  EXPECT_TRUE(ParseOptions(GetParam().options));
  EXPECT_EQ(arguments_.SkipLowInkFWCheck, GetParam().skip_check);
  EXPECT_EQ(arguments_.SuppressStartingUtilityOnError, GetParam().suppress);
}

INSTANTIATE_TEST_SUITE_P(
    All, OptionFlags,
    ::testing::Values(
        Flags{"", false, false}, Flags{"SkipLowInkFWCheck=Yes", true, false},
        Flags{"SuppressStartingUtilityOnError=Yes", false, true},
        Flags{"SkipLowInkFWCheck=Yes SuppressStartingUtilityOnError=Yes", true, true},
        Flags{"SkipLowInkFWCheck=Yes SuppressStartingUtilityOnError=No", true, false},
        Flags{"SkipLowInkFWCheck=yes SuppressStartingUtilityOnError=true", false, false},
        Flags{"SkipLowInkFWCheck=YES", false, false}, Flags{"SkipLowInkFWCheck=Yess", false, false},
        Flags{"SkipLowInkFWCheck", false, false}, Flags{"skiplowinkfwcheck=Yes", false, false},
        Flags{"SkipLowInkFWChecks=Yes", false, false},
        Flags{"Other=1 SkipLowInkFWCheck=Yes Last=2", true, false}));

TEST_F(CommandLine, MarksTheDefaults) {
  EXPECT_TRUE(ParseOptions(""));
  const ppd_choice_t* choice = ppdFindMarkedChoice(ppd_, "PrintQuality");
  ASSERT_NE(choice, nullptr);
  EXPECT_STREQ(choice->choice, "Normal");
}

TEST_F(CommandLine, MarksTheJobsOptions) {
  EXPECT_TRUE(ParseOptions("PrintQuality=Best"));
  const ppd_choice_t* choice = ppdFindMarkedChoice(ppd_, "PrintQuality");
  ASSERT_NE(choice, nullptr);
  EXPECT_STREQ(choice->choice, "Best");
}

TEST_F(CommandLine, MakesTheStatusMemory) {
  EXPECT_TRUE(ParseOptions(""));
  const auto published = test::LookAtMemory();
  ASSERT_TRUE(published);
  EXPECT_EQ(published->content, std::string(144, '\0'));
}

TEST_F(CommandLine, AMissingPpdIsToldWithTheSystemsText) {
  setenv("PPD", folder_.PathOf("missing.ppd").c_str(), 1);
  EXPECT_FALSE(ParseOptions(""));
  EXPECT_EQ(told_, "ERROR: Unable to open PPD file: No such file or directory\n");
  EXPECT_FALSE(test::LookAtMemory());
}

TEST_F(CommandLine, TheRecordIsFilledEvenWithoutAPpd) {
  setenv("PPD", folder_.PathOf("missing.ppd").c_str(), 1);
  EXPECT_FALSE(ParseOptions("SkipLowInkFWCheck=Yes"));
  EXPECT_STREQ(arguments_.user, "user");
  EXPECT_TRUE(arguments_.SkipLowInkFWCheck);
}

TEST_F(CommandLine, AnUnsetPpdIsAFailedOpen) {
  unsetenv("PPD");
  EXPECT_FALSE(ParseOptions(""));
  EXPECT_EQ(told_.find("ERROR: Unable to open PPD file: "), 0U);
  EXPECT_EQ(told_.find('\n'), told_.size() - 1);
}

TEST_F(CommandLine, AFileThatIsNoPpdIsAFailedOpen) {
  setenv("PPD", folder_.WriteFile("bad.ppd", "nothing of the kind\n").c_str(), 1);
  EXPECT_FALSE(ParseOptions(""));
  EXPECT_EQ(told_.find("ERROR: Unable to open PPD file: "), 0U);
  EXPECT_EQ(told_.find('\n'), told_.size() - 1);
}

TEST_F(CommandLine, OptionsWithoutEndAreSurvived) {
  std::string options;
  for (int i = 0; i < 5000; i++) options += "o" + std::to_string(i) + "={a 'b \"c\\ ";
  ParseOptions(options);
  EXPECT_STREQ(arguments_.title, "title");
}

}  // namespace
}  // namespace zr7700
