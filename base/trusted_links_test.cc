// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/trusted_links.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tests/support/foreign_link.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

class TrustedLinksTest : public testing::Test {
 protected:
  TrustedLinksTest() { chmod(folder_.path().c_str(), 0777); }

  std::string Link(const std::string& name, const std::string& text) const {
    const std::string path = folder_.PathOf(name);
    EXPECT_EQ(symlink(text.c_str(), path.c_str()), 0);
    return path;
  }

  // Where the path leads; "refused" with the reason.
  static std::string Target(const std::string& path) {
    PathText target;
    errno = 0;
    if (FollowTrustedLinks(path.c_str(), target)) return target.text;
    return "refused " + std::to_string(errno);
  }

  static std::string Refused(int reason) { return "refused " + std::to_string(reason); }

  const test::TemporaryFolder folder_;
  const std::string file_ = folder_.WriteFile("file", "text");
};

TEST_F(TrustedLinksTest, WhatIsNoLinkIsItself) {
  EXPECT_EQ(Target(file_), file_);
  EXPECT_EQ(Target(folder_.path()), folder_.path());
  EXPECT_EQ(Target("/no/such"), "/no/such");
  EXPECT_EQ(Target("name"), "name");
}

TEST_F(TrustedLinksTest, OwnLinksAreFollowedWhereverTheyLead) {
  EXPECT_EQ(Target(Link("absolute", file_)), file_);
  EXPECT_EQ(Target(Link("relative", "file")), file_);
  EXPECT_EQ(Target(Link("below", "in/../file")), folder_.PathOf("in/../file"));
  EXPECT_EQ(Target(Link("chain", "relative")), file_);
  EXPECT_EQ(Target(Link("dangling", "nothing")), folder_.PathOf("nothing"));
}

TEST_F(TrustedLinksTest, RootsLinksAreFollowedByEverybody) {
  if (geteuid() != 0) GTEST_SKIP() << "root has to make the link";
  const std::string link = Link("link", "file");
  const test::OrdinaryUser user;
  EXPECT_EQ(Target(link), file_);
}

TEST_F(TrustedLinksTest, LinksOfOthersAreRefused) {
  if (geteuid() != 0) GTEST_SKIP() << "only root makes links of others";
  const std::string link = test::ForeignLink(folder_.PathOf("foreign"), file_);
  EXPECT_EQ(Target(link), Refused(ELOOP));
  EXPECT_EQ(Target(Link("to foreign", "foreign")), Refused(ELOOP));
  EXPECT_EQ(OpenThroughTrustedLinks(link.c_str(), O_RDONLY), -1);
  EXPECT_EQ(errno, ELOOP);
  // Their owner may use them.
  const test::OrdinaryUser user;
  EXPECT_EQ(Target(link), file_);
}

TEST_F(TrustedLinksTest, ACircleIsRefused) {
  Link("a", "b");
  EXPECT_EQ(Target(Link("b", "a")), Refused(ELOOP));
}

TEST_F(TrustedLinksTest, PathsThatAreTooLongOrNoneAreRefused) {
  PathText target;
  EXPECT_FALSE(FollowTrustedLinks(nullptr, target));
  EXPECT_EQ(Target(""), Refused(ENOENT));
  EXPECT_EQ(Target(std::string(PATH_MAX, 'x')), Refused(ENAMETOOLONG));
  EXPECT_EQ(Target(std::string(PATH_MAX - 1, '/')), std::string(PATH_MAX - 1, '/'));
  EXPECT_EQ(Target(Link("long", std::string(PATH_MAX - 10, '/') + "x")).size(), PATH_MAX - 9U);
  EXPECT_EQ(Target(Link("too long", std::string(PATH_MAX - 10, 'x'))), Refused(ENAMETOOLONG));
}

TEST_F(TrustedLinksTest, OpensAndMakesFilesThroughOwnLinks) {
  const int file = OpenThroughTrustedLinks(Link("link", "file").c_str(), O_RDONLY);
  char bytes[8] = {};
  EXPECT_EQ(read(file, bytes, sizeof bytes), 4);
  EXPECT_STREQ(bytes, "text");
  close(file);
  const int made =
      OpenThroughTrustedLinks(Link("dangling", "made").c_str(), O_WRONLY | O_CREAT, 0600);
  EXPECT_GE(made, 0);
  close(made);
  EXPECT_EQ(test::ReadFile(folder_.PathOf("made")), "");
}

TEST_F(TrustedLinksTest, AFifoHoldsNothingUp) {
  const std::string fifo = folder_.PathOf("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(OpenThroughTrustedLinks(fifo.c_str(), O_WRONLY), -1);
  EXPECT_EQ(Target(Link("to fifo", "fifo")), fifo);
}

}  // namespace
}  // namespace zr7700
