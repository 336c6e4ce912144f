// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/log.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/foreign_link.h"
#include "tests/support/heap_calls.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::MatchesRegex;
using ::testing::SizeIs;
using ::testing::StartsWith;

class LogTest : public ::testing::Test {
 protected:
  void Open(int threshold = 5) { LogOpen(path_.c_str(), threshold); }
  std::string Content() const { return test::ReadFile(path_); }
  mode_t Mode() const {
    struct stat info = {};
    EXPECT_EQ(stat(path_.c_str(), &info), 0);
    return info.st_mode & 07777;
  }

  // Leaves a log of this size.
  void Fill(size_t bytes) const { folder_.WriteFile("some.log", std::string(bytes, '.')); }

  test::TemporaryFolder folder_;
  const std::string path_ = folder_.PathOf("some.log");
};

TEST_F(LogTest, ALineIsDateBlankMessageAndLineEnd) {
  Open();
  LogMessage(3, "%s %d", "Answer", 42);
  EXPECT_THAT(Content(), MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} "
                                      "[-+][0-9]{4} Answer 42\r\n"));
}

TEST_F(LogTest, EveryCallAppendsALine) {
  const test::LogCapture log;
  LogMessage(1, "one");
  LogMessage(1, "two");
  EXPECT_THAT(log.Lines(), ElementsAre("one", "two"));
}

TEST_F(LogTest, LevelsUpToTheThresholdAreWritten) {
  for (int threshold = 1; threshold <= 5; threshold++) {
    const test::LogCapture log(threshold);
    for (int level = 1; level <= 6; level++) LogMessage(level, "%d", level);
    EXPECT_THAT(log.Lines(), SizeIs(static_cast<size_t>(threshold)));
    EXPECT_EQ(log.Lines().back(), std::to_string(threshold));
  }
}

TEST_F(LogTest, LevelsAreComparedAsSigned) {
  const test::LogCapture log;
  LogMessage(-1, "below");
  EXPECT_THAT(log.Lines(), ElementsAre("below"));
}

// In a process that has opened no log yet.
TEST_F(LogTest, NothingIsWrittenBeforeItIsOpen) {
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
  if (getenv("ZR7700_TEST_UNOPENED_LOG") == nullptr) {
    setenv("ZR7700_TEST_UNOPENED_LOG", "1", 1);
    const std::string command =
        "cd " + folder_.path().string() + " && " + program +
        " --gtest_brief=1 --gtest_filter=LogTest.NothingIsWrittenBeforeItIsOpen";
    EXPECT_EQ(system(command.c_str()), 0);
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
    return;
  }
  errno = EDOM;
  LogMessage(1, "unheard");
  EXPECT_EQ(errno, EDOM);
}

TEST_F(LogTest, OpeningWritesNothing) {
  Open();
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(LogTest, AMissingFileIsMadeByTheFirstLine) {
  const mode_t old_mask = umask(022);
  Open();
  LogMessage(1, "first");
  umask(old_mask);
  EXPECT_THAT(Content(), EndsWith("first\r\n"));
  EXPECT_EQ(Mode(), 0755U);  // 0777 less the umask
}

TEST_F(LogTest, AMessageThatEndsInALineFeedKeepsIt) {
  Open();
  LogMessage(1, "**** Wait until printer not Busy\n");
  EXPECT_THAT(Content(), EndsWith("Busy\n\r\n"));
}

TEST_F(LogTest, AppendsBelowThreeMillionBytes) {
  Fill(2'999'999);
  Open();
  LogMessage(1, "next");
  EXPECT_GT(Content().size(), 3'000'000U);
  EXPECT_EQ(Content().substr(0, 3), "...");
  EXPECT_THAT(Content(), EndsWith("next\r\n"));
}

TEST_F(LogTest, StartsAfreshAtThreeMillionBytes) {
  Fill(3'000'000);
  Open();
  LogMessage(1, "next");
  EXPECT_LT(Content().size(), 40U);
  EXPECT_THAT(Content(), EndsWith("next\r\n"));
}

TEST_F(LogTest, OpeningMakesAFileReadableByEverybody) {
  struct {
    mode_t before;
    mode_t after;
  } const kModes[] = {{0600, 0644}, {0644, 0644}, {0640, 0644}, {0604, 0644},
                      {0700, 0744}, {0666, 0666}, {0400, 0444}};
  for (const auto& mode : kModes) {
    Fill(1);
    ASSERT_EQ(chmod(path_.c_str(), mode.before), 0);
    Open();
    EXPECT_EQ(Mode(), mode.after) << std::oct << mode.before;
    std::filesystem::remove(path_);
  }
}

TEST_F(LogTest, FixingPermissionsKeepsTheUmask) {
  Fill(1);
  ASSERT_EQ(chmod(path_.c_str(), 0600), 0);
  const mode_t old_mask = umask(077);
  LogFixPermissions(path_.c_str());
  EXPECT_EQ(umask(old_mask), 077U);
  EXPECT_EQ(Mode(), 0644U);
}

TEST_F(LogTest, FixingPermissionsOfAMissingFileDoesNothing) {
  LogFixPermissions(path_.c_str());
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(LogTest, AMessageOf899BytesIsWhole) {
  const test::LogCapture log;
  LogMessage(1, "%s", std::string(899, 'm').c_str());
  EXPECT_THAT(log.Lines(), ElementsAre(std::string(899, 'm')));
}

TEST_F(LogTest, ALongerMessageIsCutButNotItsLineEnd) {
  const test::LogCapture log;
  LogMessage(1, "%s", std::string(900, 'm').c_str());
  LogMessage(1, "%s", std::string(100'000, 'm').c_str());
  EXPECT_THAT(log.Lines(), ElementsAre(std::string(899, 'm'), std::string(899, 'm')));
}

TEST_F(LogTest, ACharacterOfZeroEndsTheMessageAndNotTheLine) {
  const test::LogCapture log;
  LogMessage(1, "Printer Status = %c. \n\n", '\0');
  LogMessage(1, "next");
  EXPECT_THAT(log.Lines(), ElementsAre("Printer Status = ", "next"));
}

TEST_F(LogTest, ItsOwnUsersLinkIsFollowed) {
  const std::string target = folder_.WriteFile("target", "old\r\n");
  ASSERT_EQ(chmod(target.c_str(), 0600), 0);
  std::filesystem::create_symlink("target", path_);
  Open();
  LogMessage(1, "next");
  EXPECT_THAT(test::ReadFile(target), AllOf(StartsWith("old\r\n"), EndsWith(" next\r\n")));
  EXPECT_EQ(Mode(), 0644U);  // stat follows the link
}

TEST_F(LogTest, ADanglingLinkOfItsOwnUsersMakesTheFile) {
  std::filesystem::create_symlink("target", path_);
  Open();
  LogMessage(1, "first");
  EXPECT_THAT(test::ReadFile(folder_.PathOf("target")), EndsWith(" first\r\n"));
}

TEST_F(LogTest, ALinkOfAnotherIsNotFollowed) {
  if (geteuid() != 0) GTEST_SKIP() << "only root makes links of others";
  const std::string target = folder_.WriteFile("target", "old");
  ASSERT_EQ(chmod(target.c_str(), 0600), 0);
  test::ForeignLink(path_, target);
  Open();
  LogMessage(1, "stray");
  EXPECT_EQ(test::ReadFile(target), "old");
  EXPECT_EQ(Mode(), 0600U);
}

TEST_F(LogTest, AFileOfAnotherWithASecondNameIsLeftAlone) {
  if (geteuid() != 0) GTEST_SKIP() << "only root gives files away";
  const std::string target = folder_.WriteFile("target", "old");
  std::filesystem::create_hard_link(target, path_);
  ASSERT_EQ(chown(target.c_str(), 65534, 65534), 0);
  ASSERT_EQ(chmod(target.c_str(), 0600), 0);
  Open();
  LogMessage(1, "stray");
  EXPECT_EQ(Content(), "old");
  EXPECT_EQ(Mode(), 0600U);
}

TEST_F(LogTest, AFileOfAnotherAndAnOwnOneWithASecondNameAreWritten) {
  Fill(1);
  if (geteuid() == 0) {
    ASSERT_EQ(chown(path_.c_str(), 65534, 65534), 0);
  }
  Open();
  LogMessage(1, "one");
  EXPECT_THAT(Content(), EndsWith(" one\r\n"));
  ASSERT_EQ(chown(path_.c_str(), geteuid(), getegid()), 0);
  std::filesystem::create_hard_link(path_, folder_.PathOf("second"));
  LogMessage(1, "two");
  EXPECT_THAT(Content(), EndsWith(" two\r\n"));
}

TEST_F(LogTest, ALineNeedsNoHeap) {
  const test::LogCapture log;
  const std::string long_text(2000, 'x');
  const size_t calls_before = test::HeapCalls();
  LogMessage(1, "%s %d %.0f%% %u %p %c %.64s", long_text.c_str(), -1, 100.0 / 3, 7U,
             static_cast<const void*>(&log), 'c', "text");
  EXPECT_EQ(test::HeapCalls(), calls_before);
  EXPECT_THAT(log.Lines(), SizeIs(1));
}

TEST_F(LogTest, AFifoInItsPlaceHoldsNothingUp) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  Open();
  LogMessage(1, "unheard");
  const int reader = open(path_.c_str(), O_RDONLY | O_NONBLOCK);
  LogMessage(1, "still unheard");
  char byte;
  EXPECT_LE(read(reader, &byte, 1), 0);
  close(reader);
}

TEST_F(LogTest, AFolderInItsPlaceLosesTheLine) {
  std::filesystem::create_directory(path_);
  Open();
  errno = EDOM;
  LogMessage(1, "unheard");
  EXPECT_EQ(errno, EDOM);
  EXPECT_TRUE(std::filesystem::is_empty(path_));
}

TEST_F(LogTest, AMissingFolderLosesTheLine) {
  LogOpen(folder_.PathOf("missing/some.log").c_str(), 5);
  errno = EDOM;
  LogMessage(1, "unheard");
  EXPECT_EQ(errno, EDOM);
}

TEST_F(LogTest, AMovedFileIsMadeAnew) {
  Open();
  LogMessage(1, "first");
  std::filesystem::rename(path_, folder_.PathOf("old.log"));
  LogMessage(1, "second");
  EXPECT_THAT(Content(), EndsWith("second\r\n"));
  EXPECT_LT(Content().size(), 40U);
}

TEST_F(LogTest, LinesOfTwoThreadsDoNotMix) {
  const test::LogCapture log;
  const auto write = [](char letter) {
    for (int i = 0; i < 300; i++) LogMessage(1, "%s", std::string(200, letter).c_str());
  };
  std::thread other(write, 'b');
  write('a');
  other.join();
  const std::vector<std::string> lines = log.Lines();
  EXPECT_THAT(lines, SizeIs(600));
  for (const std::string& line : lines) {
    EXPECT_TRUE(line == std::string(200, 'a') || line == std::string(200, 'b')) << line;
  }
}

}  // namespace
}  // namespace zr7700
