// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/replaced_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>

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
    struct stat facts {};
    ASSERT_EQ(stat(path_.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 07777U, mode);
  }
  umask(old_mask);
}

TEST_F(ReplacedFileTest, FollowsASymbolicLink) {
  const std::string link = folder_.PathOf("link");
  fs::create_symlink("file", link);
  EXPECT_TRUE(ReplaceFile(link.c_str(), "new"));
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(test::ReadFile(path_), "new");
}

TEST_F(ReplacedFileTest, NeedsAFile) {
  EXPECT_FALSE(ReplaceFile(folder_.PathOf("nothing").c_str(), "x"));
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

}  // namespace
}  // namespace zr7700
