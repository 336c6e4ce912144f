// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/ini_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include "engine/job_variables.h"
#include "tests/support/foreign_link.h"
#include "tests/support/job_test.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class IniFileTest : public test::JobTest {
 protected:
  IniFileTest() { job_variables.files.engineIniPath = path_.c_str(); }

  void Given(const std::string& text) { folder_.WriteFile("engine.ini", text); }
  std::string Text() const { return test::ReadFile(path_); }

  test::TemporaryFolder folder_;
  const std::string path_ = folder_.PathOf("engine.ini");
};

TEST_F(IniFileTest, SettingReplacesTheKeysLine) {
  Given("[Configuration]\nColor=1\n");
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "2"));
  EXPECT_EQ(Text(), "[Configuration]\nColor=2 \n");
  EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(IniFileTest, MissingKeyGoesToTheEndOfItsSectionBeforeTheNextHeader) {
  Given("[Configuration]\nUseDebugSettings=1\n[ESwathBuilder]\nSlot1PrintDirection=0\n");
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Printer=", "1"));
  EXPECT_EQ(Text(),
            "[Configuration]\nUseDebugSettings=1\nPrinter=1 \n[ESwathBuilder]\n"
            "Slot1PrintDirection=0\n");
}

TEST_F(IniFileTest, KeyMissingFromTheLastSectionComesAfterAnEmptyLine) {
  Given("[Configuration]\nUseDebugSettings=1\n");
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Printer=", "1"));
  EXPECT_EQ(Text(), "[Configuration]\nUseDebugSettings=1\n\nPrinter=1 \n");
}

TEST_F(IniFileTest, KeyMissingFromTheLastSectionWithoutALineEndHasNoEmptyLine) {
  Given("[Configuration]\nUseDebugSettings=1");
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Printer=", "1"));
  EXPECT_EQ(Text(), "[Configuration]\nUseDebugSettings=1\nPrinter=1 \n");
}

TEST_F(IniFileTest, MissingSectionIsAddedAtTheEnd) {
  Given("[Configuration]\nColor=1\n");
  EXPECT_TRUE(WriteFerroIniFile("[ESwathBuilder]", "Slot1NumPassesOverride=", "8"));
  EXPECT_EQ(Text(), "[Configuration]\nColor=1\n[ESwathBuilder]\nSlot1NumPassesOverride=8 \n");
}

TEST_F(IniFileTest, MissingSectionIsGluedToALastLineWithoutALineEnd) {
  Given("[Configuration]\nColor=1");
  EXPECT_TRUE(WriteFerroIniFile("[ESwathBuilder]", "Slot1NumPassesOverride=", "8"));
  EXPECT_EQ(Text(), "[Configuration]\nColor=1[ESwathBuilder]\nSlot1NumPassesOverride=8 \n");
}

TEST_F(IniFileTest, EmptyFileGetsSectionAndKey) {
  Given("");
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "2"));
  EXPECT_EQ(Text(), "[Configuration]\nColor=2 \n");
  EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(IniFileTest, EveryLineThatHoldsTheKeyIsReplacedInAnySection) {
  Given("Color=0\n[Other]\nXColor=5\n  Color=7 and more\n[Configuration]\nColor=1\n");
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "2"));
  EXPECT_EQ(Text(), "Color=2 \n[Other]\nColor=2 \nColor=2 \n[Configuration]\nColor=2 \n");
}

TEST_F(IniFileTest, KeyOfAnotherSectionKeepsTheKeyOutOfItsOwn) {
  Given("[Other]\nColor=5\n[Configuration]\nPrinter=1\n[Last]\n");
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "2"));
  EXPECT_EQ(Text(), "[Other]\nColor=2 \n[Configuration]\nPrinter=1\n[Last]\n");
}

TEST_F(IniFileTest, KeyThatFollowsItsSectionIsWrittenTwice) {
  // The first header after the section comes before the line that holds the key.
  Given("[Configuration]\nPrinter=1\n[Other]\nColor=5\n");
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "2"));
  EXPECT_EQ(Text(), "[Configuration]\nPrinter=1\nColor=2 \n[Other]\nColor=2 \n");
}

TEST_F(IniFileTest, HeaderThatHoldsTheKeyIsReplacedAndOpensNoSection) {
  Given("[Configuration] Color=\nPrinter=1\n[Other]\nA=1\n");
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "2"));
  EXPECT_EQ(Text(), "Color=2 \nPrinter=1\n[Other]\nA=1\n");
}

TEST_F(IniFileTest, SectionIsFoundAnywhereInAHeaderLine) {
  Given("[[Configuration] of the printer\nA=1\n[Other]\n");
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "2"));
  EXPECT_EQ(Text(), "[[Configuration] of the printer\nA=1\nColor=2 \n[Other]\n");
}

TEST_F(IniFileTest, LineThatDoesNotBeginWithABracketIsNoHeader) {
  Given(" [Configuration]\nA=1\n[Other]\n");
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "2"));
  EXPECT_EQ(Text(), " [Configuration]\nA=1\n[Other]\n[Configuration]\nColor=2 \n");
}

TEST_F(IniFileTest, SectionThatStandsTwiceGetsTheKeyOnce) {
  Given("[Configuration]\nA=1\n[Other]\n[Configuration]\nB=1\n");
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "2"));
  EXPECT_EQ(Text(), "[Configuration]\nA=1\nColor=2 \n[Other]\n[Configuration]\nB=1\n");
}

TEST_F(IniFileTest, UntouchedLinesAreCopiedByteForByte) {
  const std::string odd = "\n\n \t\r\nno key here \x01\xFF\n[]\n[Configuration]\r\n";
  Given(odd + "Color=1\r\n\n");
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "2"));
  EXPECT_EQ(Text(), odd + "Color=2 \n\n");
}

TEST_F(IniFileTest, MissingFileIsCreatedWithHeaderAndKey) {
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "UseDebugSettings=", "1"));
  EXPECT_EQ(Text(), "[Configuration]\nUseDebugSettings=1 \n");
  EXPECT_THAT(LogLines(), ElementsAre("ferro ini file not present trying to create"));
}

TEST_F(IniFileTest, FileInAMissingFolderCannotBeCreated) {
  const std::string path = folder_.PathOf("missing/engine.ini");
  job_variables.files.engineIniPath = path.c_str();
  EXPECT_FALSE(WriteFerroIniFile("[Configuration]", "Color=", "1"));
  EXPECT_THAT(LogLines(),
              ElementsAre("ferro ini file not present trying to create",
                          "Unable to open ferro ini file for writing", "WriteFerroIniFile failed"));
}

TEST_F(IniFileTest, WithoutAFileNameNothingCanBeSetOrRemoved) {
  job_variables.files.engineIniPath = nullptr;
  EXPECT_FALSE(WriteFerroIniFile("[Configuration]", "Color=", "1"));
  EXPECT_FALSE(RemoveFerroIniKey("[Configuration]", "Color="));
}

TEST_F(IniFileTest, FifoInTheFilesPlaceHoldsNothingUp) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  EXPECT_FALSE(WriteFerroIniFile("[Configuration]", "Color=", "1"));
  EXPECT_FALSE(RemoveFerroIniKey("[Configuration]", "Color="));
  EXPECT_THAT(LogLines(),
              ElementsAre("ferro ini file not present trying to create",
                          "Unable to open ferro ini file for writing", "WriteFerroIniFile failed",
                          "Unable to open ferro ini file for writing", "WriteFerroIniFile failed"));
}

TEST_F(IniFileTest, FolderInTheFilesPlaceIsNoFile) {
  ASSERT_EQ(mkdir(path_.c_str(), 0700), 0);
  EXPECT_FALSE(WriteFerroIniFile("[Configuration]", "Color=", "1"));
  EXPECT_FALSE(RemoveFerroIniKey("[Configuration]", "Color="));
}

TEST_F(IniFileTest, RemovingDropsTheKeyInItsSectionOnly) {
  Given("A=1\nKey=0\n[One]\nKey=1\n[Two]\nKey=2\nXKey=3\nB=1\n[Three]\nKey=4\n");
  EXPECT_TRUE(RemoveFerroIniKey("[Two]", "Key="));
  EXPECT_EQ(Text(), "A=1\nKey=0\n[One]\nKey=1\n[Two]\nB=1\n[Three]\nKey=4\n");
  EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(IniFileTest, RemovingAKeyOfAnotherSectionLeavesTheFileUntouched) {
  const std::string text = "[Configuration]\nSlot1NumPassesOverride=8\n[ESwathBuilder]\nA=1";
  Given(text);
  struct stat before, after;
  ASSERT_EQ(stat(path_.c_str(), &before), 0);
  EXPECT_TRUE(RemoveFerroIniKey("[ESwathBuilder]", "Slot1NumPassesOverride="));
  EXPECT_EQ(Text(), text);
  ASSERT_EQ(stat(path_.c_str(), &after), 0);
  EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
  EXPECT_EQ(before.st_mtim.tv_sec, after.st_mtim.tv_sec);
}

TEST_F(IniFileTest, RemovingFromEverySectionOfThatName) {
  Given("[One]\nKey=1\n[Two]\nKey=2\n[One] again\nKey=3\nKey=4");
  EXPECT_TRUE(RemoveFerroIniKey("[One]", "Key="));
  EXPECT_EQ(Text(), "[One]\n[Two]\nKey=2\n[One] again\n");
}

TEST_F(IniFileTest, RemovingDropsAHeaderThatHoldsTheKeyInsideTheSection) {
  // The dropped header does not end the section.
  Given("[One]\n[Key=]\nA=1\nKey=2\n");
  EXPECT_TRUE(RemoveFerroIniKey("[One]", "Key="));
  EXPECT_EQ(Text(), "[One]\nA=1\n");
}

TEST_F(IniFileTest, HeaderThatHoldsSectionAndKeyStaysAndOpensTheSection) {
  Given("[One] Key=\nKey=1\nA=1\n");
  EXPECT_TRUE(RemoveFerroIniKey("[One]", "Key="));
  EXPECT_EQ(Text(), "[One] Key=\nA=1\n");
}

TEST_F(IniFileTest, RemovingFromAMissingFileFailsAndCreatesNone) {
  EXPECT_FALSE(RemoveFerroIniKey("[One]", "Key="));
  EXPECT_THAT(LogLines(),
              ElementsAre("Unable to open ferro ini file for writing", "WriteFerroIniFile failed"));
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(IniFileTest, FileNameIsTakenAtEveryCall) {
  EXPECT_TRUE(WriteFerroIniFile("[A]", "K=", "1"));
  const std::string other = folder_.PathOf("other.ini");
  job_variables.files.engineIniPath = other.c_str();
  EXPECT_TRUE(WriteFerroIniFile("[A]", "K=", "2"));
  EXPECT_EQ(Text(), "[A]\nK=1 \n");
  EXPECT_EQ(test::ReadFile(other), "[A]\nK=2 \n");
}

TEST_F(IniFileTest, AWriteThatWouldChangeNothingIsLeftOut) {
  Given("[Configuration]\nColor=2 \n");
  struct stat before, after;
  ASSERT_EQ(stat(path_.c_str(), &before), 0);
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "2"));
  ASSERT_EQ(stat(path_.c_str(), &after), 0);
  EXPECT_EQ(after.st_ino, before.st_ino);
  EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "1"));
  ASSERT_EQ(stat(path_.c_str(), &after), 0);
  EXPECT_NE(after.st_ino, before.st_ino);
  EXPECT_EQ(Text(), "[Configuration]\nColor=1 \n");
}

// The beginning of a process's memory is never mapped: reading it is an error, not an end.
TEST_F(IniFileTest, NothingIsWrittenAfterAReadError) {
  std::filesystem::create_symlink("/proc/self/mem", path_);
  EXPECT_FALSE(WriteFerroIniFile("[Configuration]", "Color=", "1"));
  EXPECT_FALSE(RemoveFerroIniKey("[Configuration]", "Color="));
  EXPECT_THAT(LogLines(),
              ElementsAre("Unable to open ferro ini file for writing", "WriteFerroIniFile failed",
                          "Unable to open ferro ini file for writing", "WriteFerroIniFile failed"));
}

TEST_F(IniFileTest, AFileThatMayOnlyBeWrittenIsBegunAnew) {
  Given("[Other]\nA=1\n");
  chmod(folder_.path().c_str(), 0755);
  ASSERT_EQ(chmod(path_.c_str(), 0222), 0);
  {
    const test::OrdinaryUser user;
    EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "1"));
  }
  ASSERT_EQ(chmod(path_.c_str(), 0600), 0);
  EXPECT_EQ(Text(), "[Configuration]\nColor=1 \n");
}

TEST_F(IniFileTest, ItsOwnUsersLinkIsFollowedAndStays) {
  folder_.WriteFile("target", "[Configuration]\nColor=1 \n");
  std::filesystem::create_symlink("target", path_);
  EXPECT_TRUE(WriteFerroIniFile("[Configuration]", "Color=", "2"));
  EXPECT_TRUE(std::filesystem::is_symlink(path_));
  EXPECT_EQ(Text(), "[Configuration]\nColor=2 \n");
}

TEST_F(IniFileTest, ALinkOfAnotherIsNotFollowed) {
  if (geteuid() != 0) GTEST_SKIP() << "only root makes links of others";
  const std::string text = "[Configuration]\nColor=1 \n";
  test::ForeignLink(path_, folder_.WriteFile("target", text));
  EXPECT_FALSE(WriteFerroIniFile("[Configuration]", "Color=", "2"));
  EXPECT_FALSE(RemoveFerroIniKey("[Configuration]", "Color="));
  EXPECT_EQ(Text(), text);
}

TEST_F(IniFileTest, LinesOfAJobsSettings) {
  WriteFerroIniFile("[Configuration]", "UseDebugSettings=", "1");
  WriteFerroIniFile("[Configuration]", "Printer=", "1");
  WriteFerroIniFile("[Configuration]", "Color=", "2");
  WriteFerroIniFile("[ESwathBuilder]", "Slot1NumPassesOverride=", "8");
  WriteFerroIniFile("[ESwathBuilder]", "Slot1PrintDirection=", "0");
  WriteFerroIniFile("[ESwathBuilder]", "Slot1NumPassesOverride=", "1");
  EXPECT_EQ(Text(),
            "[Configuration]\nUseDebugSettings=1 \n\nPrinter=1 \n\nColor=2 \n[ESwathBuilder]\n"
            "Slot1NumPassesOverride=1 \n\nSlot1PrintDirection=0 \n");
}

TEST_F(IniFileTest, EveryLineIsADetail) {
  const test::LogCapture log(1);
  const std::string path = folder_.PathOf("missing/engine.ini");
  job_variables.files.engineIniPath = path.c_str();
  EXPECT_FALSE(WriteFerroIniFile("[Configuration]", "Color=", "1"));
  EXPECT_FALSE(RemoveFerroIniKey("[Configuration]", "Color="));
  EXPECT_THAT(log.Lines(),
              ElementsAre("ferro ini file not present trying to create",
                          "Unable to open ferro ini file for writing", "WriteFerroIniFile failed",
                          "Unable to open ferro ini file for writing", "WriteFerroIniFile failed"));
}

}  // namespace
}  // namespace zr7700
