// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/regular_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tests/support/foreign_link.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

class RegularFileTest : public testing::Test {
 protected:
  FileReading Read(const std::string& path, size_t limit_bytes = 1 << 20,
                   Links links = Links::kTrusted) {
    bytes_ = "what was there before";
    return ReadRegularFile(path.c_str(), links, limit_bytes, bytes_);
  }

  const test::TemporaryFolder folder_;
  std::string bytes_;
};

TEST_F(RegularFileTest, ReadsUpToTheLimit) {
  const std::string text = std::string(50'000, 'a') + std::string("\0b", 2);
  const std::string path = folder_.WriteFile("file", text);
  EXPECT_EQ(Read(path), FileReading::kRead);
  EXPECT_EQ(bytes_, text);
  EXPECT_EQ(Read(path, 50'002), FileReading::kRead);
  EXPECT_EQ(bytes_, text);
  EXPECT_EQ(Read(path, 50'001), FileReading::kTooLong);
  EXPECT_EQ(bytes_, text.substr(0, 50'001));
  EXPECT_EQ(Read(path, 0), FileReading::kTooLong);
  EXPECT_EQ(bytes_, "");
}

TEST_F(RegularFileTest, AnEmptyFileIsRead) {
  EXPECT_EQ(Read(folder_.WriteFile("empty", ""), 0), FileReading::kRead);
  EXPECT_EQ(bytes_, "");
}

TEST_F(RegularFileTest, TellsAMissingFile) {
  EXPECT_EQ(Read("/no/such"), FileReading::kMissing);
  EXPECT_EQ(Read(folder_.WriteFile("file", "x") + "/in"), FileReading::kMissing);
  EXPECT_EQ(bytes_, "");
  EXPECT_EQ(ReadRegularFile(nullptr, Links::kTrusted, 10, bytes_), FileReading::kMissing);
}

TEST_F(RegularFileTest, WhatIsNoFileIsRefused) {
  const std::string fifo = folder_.PathOf("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const std::string& path : {folder_.path().string(), fifo, std::string("/dev/zero")}) {
    for (const Links links : {Links::kFollowed, Links::kTrusted}) {
      EXPECT_EQ(Read(path, 10, links), FileReading::kRefused) << path;
      EXPECT_EQ(errno, EINVAL) << path;
      EXPECT_EQ(bytes_, "") << path;
    }
  }
}

TEST_F(RegularFileTest, OwnLinksAreReadEitherWay) {
  const std::string target = folder_.WriteFile("target", "precious");
  const std::string link = folder_.PathOf("link");
  ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);
  for (const Links links : {Links::kFollowed, Links::kTrusted}) {
    EXPECT_EQ(Read(link, 10, links), FileReading::kRead);
    EXPECT_EQ(bytes_, "precious");
  }
}

TEST_F(RegularFileTest, LinksOfOthersAreReadWhereAllAreFollowed) {
  if (geteuid() != 0) GTEST_SKIP() << "only root makes links of others";
  const std::string target = folder_.WriteFile("target", "precious");
  const std::string link = test::ForeignLink(folder_.PathOf("link"), target);
  EXPECT_EQ(Read(link, 10, Links::kTrusted), FileReading::kRefused);
  EXPECT_EQ(errno, ELOOP);
  EXPECT_EQ(Read(link, 10, Links::kFollowed), FileReading::kRead);
  EXPECT_EQ(bytes_, "precious");
}

TEST_F(RegularFileTest, AFileThatMayNotBeReadIsRefused) {
  chmod(folder_.path().c_str(), 0755);
  const std::string path = folder_.WriteFile("file", "secret");
  ASSERT_EQ(chmod(path.c_str(), 0200), 0);
  const test::OrdinaryUser user;
  EXPECT_EQ(Read(path), FileReading::kRefused);
  EXPECT_EQ(errno, EACCES);
}

// A process without a free descriptor cannot open what is there.
TEST_F(RegularFileTest, AFileThatTheSystemCannotOpenNowIsNoMissingOne) {
  const std::string path = folder_.WriteFile("file", "text");
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit none = {0, limit.rlim_max};
  std::string bytes;
  // Nothing else while no file can be opened: the checkers' own libraries open some.
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const FileReading reading = ReadRegularFile(path.c_str(), Links::kTrusted, 1 << 20, bytes);
  const int error = errno;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  EXPECT_EQ(reading, FileReading::kFailed);
  EXPECT_EQ(error, EMFILE);
}

// The beginning of a process's memory is never mapped, so that reading it is an error.
TEST_F(RegularFileTest, TellsAFailedReading) {
  EXPECT_EQ(Read("/proc/self/mem"), FileReading::kFailed);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(bytes_, "");
}

}  // namespace
}  // namespace zr7700
