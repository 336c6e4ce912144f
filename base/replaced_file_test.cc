// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/replaced_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <vector>

#include "tests/support/foreign_link.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

namespace fs = std::filesystem;

class ReplacedFileTest : public testing::Test {
 protected:
  ReplacedFileTest() { fs::permissions(folder_.path(), fs::perms(0755)); }

  size_t FilesInFolder() const {
    return static_cast<size_t>(
        std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()));
  }

  struct stat Facts() const {
    struct stat facts {};
    EXPECT_EQ(stat(path_.c_str(), &facts), 0);
    return facts;
  }

  const test::TemporaryFolder folder_;
  const std::string path_ = folder_.WriteFile("file", "old");
};

TEST_F(ReplacedFileTest, HoldsTheNewBytesAndNothingIsLeftBeside) {
  const std::string bytes("new\0bytes", 9);
  EXPECT_TRUE(ReplaceFile(path_.c_str(), bytes));
  EXPECT_EQ(test::ReadFile(path_), bytes);
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(ReplacedFileTest, KeepsTheMode) {
  const mode_t old_mask = umask(077);
  for (const mode_t mode : {0644U, 0600U, 0666U}) {
    ASSERT_EQ(chmod(path_.c_str(), mode), 0);
    EXPECT_TRUE(ReplaceFile(path_.c_str(), "x"));
    EXPECT_EQ(Facts().st_mode & 07777U, mode);
  }
  umask(old_mask);
}

TEST_F(ReplacedFileTest, KeepsOwnerAndGroup) {
  if (geteuid() != 0) GTEST_SKIP() << "root has to give the file away";
  ASSERT_EQ(chown(path_.c_str(), 4711, 4712), 0);
  ASSERT_EQ(chmod(path_.c_str(), 0640), 0);
  const ino_t old_number = Facts().st_ino;
  EXPECT_TRUE(ReplaceFile(path_.c_str(), "x"));
  EXPECT_NE(Facts().st_ino, old_number);
  EXPECT_EQ(Facts().st_uid, 4711U);
  EXPECT_EQ(Facts().st_gid, 4712U);
  EXPECT_EQ(Facts().st_mode & 07777U, 0640U);
}

TEST_F(ReplacedFileTest, AFileOfAnotherIsWrittenInPlaceAndKeepsItsOwner) {
  if (geteuid() != 0) GTEST_SKIP() << "the file has to be root's";
  chmod(folder_.path().c_str(), 0777);
  ASSERT_EQ(chmod(path_.c_str(), 0666), 0);
  const ino_t old_number = Facts().st_ino;
  {
    const test::OrdinaryUser user;
    EXPECT_TRUE(ReplaceFile(path_.c_str(), "n"));
  }
  EXPECT_EQ(Facts().st_ino, old_number);
  EXPECT_EQ(Facts().st_uid, 0U);
  EXPECT_EQ(test::ReadFile(path_), "n");
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(ReplacedFileTest, AFolderThatAllowsNoNewFileGetsItInPlace) {
  ASSERT_EQ(chmod(path_.c_str(), 0666), 0);
  chmod(folder_.path().c_str(), 0555);
  for (const std::string text : {"shorter than before", "s", ""}) {
    const test::OrdinaryUser user;
    EXPECT_TRUE(ReplaceFile(path_.c_str(), text));
    EXPECT_EQ(test::ReadFile(path_), text);
  }
  chmod(folder_.path().c_str(), 0755);
}

TEST_F(ReplacedFileTest, AFileThatMayNotBeWrittenIsNotReplaced) {
  chmod(folder_.path().c_str(), 0777);
  ASSERT_EQ(chmod(path_.c_str(), 0444), 0);
  {
    const test::OrdinaryUser user;  // who might put another file in its place
    EXPECT_FALSE(ReplaceFile(path_.c_str(), "new"));
  }
  EXPECT_EQ(test::ReadFile(path_), "old");
}

TEST_F(ReplacedFileTest, ASecondNameStays) {
  const std::string second = folder_.PathOf("second");
  fs::create_hard_link(path_, second);
  EXPECT_TRUE(ReplaceFile(path_.c_str(), "new"));
  EXPECT_EQ(test::ReadFile(second), "new");
  EXPECT_EQ(Facts().st_nlink, 2U);
}

TEST_F(ReplacedFileTest, FollowsItsOwnUsersLink) {
  const std::string link = folder_.PathOf("link");
  fs::create_symlink("file", link);
  EXPECT_TRUE(ReplaceFile(link.c_str(), "new"));
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(test::ReadFile(path_), "new");
}

TEST_F(ReplacedFileTest, LeavesWhatALinkOfAnotherLeadsTo) {
  if (geteuid() != 0) GTEST_SKIP() << "only root makes links of others";
  const std::string link = test::ForeignLink(folder_.PathOf("link"), path_);
  EXPECT_FALSE(ReplaceFile(link.c_str(), "new"));
  EXPECT_FALSE(CreateFile(link.c_str(), "new"));
  EXPECT_EQ(test::ReadFile(path_), "old");
}

TEST_F(ReplacedFileTest, NeedsAFile) {
  EXPECT_FALSE(ReplaceFile(folder_.PathOf("nothing").c_str(), "x"));
  EXPECT_FALSE(ReplaceFile(folder_.path().c_str(), "x"));
  EXPECT_FALSE(ReplaceFile(nullptr, "x"));
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(ReplacedFileTest, AFailureLeavesTheOldFile) {
  chmod(folder_.path().c_str(), 0555);
  {
    const test::OrdinaryUser user;  // who cannot make a new file beside the old one
    EXPECT_FALSE(ReplaceFile(path_.c_str(), "new"));
  }
  chmod(folder_.path().c_str(), 0755);
  EXPECT_EQ(test::ReadFile(path_), "old");
  EXPECT_EQ(FilesInFolder(), 1U);
}

// The limit stands for a full disk: the first half of the bytes is taken, the rest is not.
TEST_F(ReplacedFileTest, AWriteThatFailsHalfwayLeavesTheOldFile) {
  signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  const rlimit small = {5, limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const bool replaced = ReplaceFile(path_.c_str(), "0123456789");
  const bool created = CreateFile(folder_.PathOf("new").c_str(), "0123456789");
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  EXPECT_FALSE(replaced);
  EXPECT_FALSE(created);
  EXPECT_EQ(test::ReadFile(path_), "old");
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(ReplacedFileTest, WhatKilledWritersLeftIsNoHindranceAndGoesInTime) {
  std::vector<std::string> left;
  for (int i = 0; i < 8; ++i) left.push_back(folder_.WriteFile("file.new" + std::to_string(i), ""));
  // All names are taken: the content is written in place.
  const ino_t old_number = Facts().st_ino;
  EXPECT_TRUE(ReplaceFile(path_.c_str(), "in place"));
  EXPECT_EQ(Facts().st_ino, old_number);
  EXPECT_EQ(test::ReadFile(path_), "in place");
  for (const std::string& file : left) {
    fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::minutes(2));
  }
  EXPECT_TRUE(ReplaceFile(path_.c_str(), "beside"));
  EXPECT_NE(Facts().st_ino, old_number);
  EXPECT_EQ(test::ReadFile(path_), "beside");
  EXPECT_FALSE(fs::exists(left.front()));
}

TEST_F(ReplacedFileTest, CreatesAFileWithTheRightsThatTheMaskLeaves) {
  const std::string path = folder_.PathOf("new");
  const mode_t old_mask = umask(027);
  EXPECT_TRUE(CreateFile(path.c_str(), "text"));
  umask(old_mask);
  EXPECT_EQ(test::ReadFile(path), "text");
  struct stat facts {};
  ASSERT_EQ(stat(path.c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 07777U, 0640U);
  EXPECT_EQ(FilesInFolder(), 2U);
}

TEST_F(ReplacedFileTest, CreatesNothingInTheFilesPlaceOrWhereThereIsNoFolder) {
  EXPECT_FALSE(CreateFile(path_.c_str(), "new"));
  EXPECT_FALSE(CreateFile(folder_.PathOf("no/such").c_str(), "new"));
  EXPECT_FALSE(CreateFile(nullptr, "new"));
  EXPECT_EQ(test::ReadFile(path_), "old");
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(ReplacedFileTest, CreatesWhatItsOwnUsersLinkLeadsTo) {
  const std::string link = folder_.PathOf("link");
  fs::create_symlink("new", link);
  EXPECT_TRUE(CreateFile(link.c_str(), "text"));
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(test::ReadFile(folder_.PathOf("new")), "text");
}

}  // namespace
}  // namespace zr7700
