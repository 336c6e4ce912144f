// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/library_trust.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "tests/support/foreign_link.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

constexpr uid_t kNobody = 65534;

// TOP/above/folder/library, all root's.
class LibraryTrustTest : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "the files have to be root's";
    library_ = top_.WriteFile("above/folder/library", "code");
    for (const std::string& path : {top_.path().string(), above_, folder_}) {
      ASSERT_EQ(chmod(path.c_str(), 0755), 0);
    }
  }

  static bool IsTrusted(const std::string& path) {
    PathText real_path;
    errno = 0;
    return BelongsToRootAlone(path.c_str(), real_path);
  }

  const test::TemporaryFolder top_;
  const std::string above_ = top_.PathOf("above");
  const std::string folder_ = top_.PathOf("above/folder");
  std::string library_;
};

TEST_F(LibraryTrustTest, RootsOwnIsTrusted) {
  PathText real_path;
  EXPECT_TRUE(BelongsToRootAlone(library_.c_str(), real_path));
  EXPECT_EQ(real_path.text, library_);
}

TEST_F(LibraryTrustTest, WhatOthersOwnOrMayWriteIsNot) {
  for (const std::string& path : {library_, folder_, above_}) {
    ASSERT_TRUE(IsTrusted(library_));
    ASSERT_EQ(chmod(path.c_str(), 0757), 0);
    EXPECT_FALSE(IsTrusted(library_)) << path;
    EXPECT_EQ(errno, EPERM);
    ASSERT_EQ(chmod(path.c_str(), 0775), 0);  // by root's own group, or an access list
    EXPECT_FALSE(IsTrusted(library_)) << path;
    ASSERT_EQ(chmod(path.c_str(), 0755), 0);
    EXPECT_TRUE(IsTrusted(library_)) << path;
    ASSERT_EQ(chown(path.c_str(), kNobody, 0), 0);
    EXPECT_FALSE(IsTrusted(library_)) << path;
    ASSERT_EQ(chown(path.c_str(), 0, 0), 0);
  }
}

// Nobody else renames what is root's in a sticky folder; but beside the library others may put what
// it loads.
TEST_F(LibraryTrustTest, OnlyAFolderAboveMayBeSticky) {
  ASSERT_EQ(chmod(above_.c_str(), 01777), 0);
  EXPECT_TRUE(IsTrusted(library_));
  ASSERT_EQ(chmod(folder_.c_str(), 01777), 0);
  EXPECT_FALSE(IsTrusted(library_));
}

TEST_F(LibraryTrustTest, LinksAreJudgedByWhereTheyLead) {
  const std::string link = test::ForeignLink(top_.PathOf("link"), library_);
  PathText real_path;
  EXPECT_TRUE(BelongsToRootAlone(link.c_str(), real_path));
  EXPECT_EQ(real_path.text, library_);
  ASSERT_EQ(chmod(library_.c_str(), 0666), 0);
  EXPECT_FALSE(IsTrusted(link));
}

TEST_F(LibraryTrustTest, AMissingFileIsTold) {
  EXPECT_FALSE(IsTrusted(top_.PathOf("nothing")));
  EXPECT_EQ(errno, ENOENT);
}

}  // namespace
}  // namespace zr7700
