// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/regular_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

TEST(RegularFile, ReadsUpToTheLimit) {
  const test::TemporaryFolder folder;
  const std::string text = std::string(5000, 'a') + std::string("\0b", 2);
  const std::string path = folder.WriteFile("file", text);
  EXPECT_EQ(ReadRegularFile(path.c_str(), 1 << 20), text);
  EXPECT_EQ(ReadRegularFile(path.c_str(), 5001), text.substr(0, 5001));
  EXPECT_EQ(ReadRegularFile(path.c_str(), 0), "");
}

TEST(RegularFile, WhatIsNoFileCannotBeRead) {
  const test::TemporaryFolder folder;
  const std::string fifo = folder.PathOf("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const char* const path : {folder.path().c_str(), fifo.c_str(), "/dev/zero", "/no/such"}) {
    EXPECT_EQ(ReadRegularFile(path, 10), std::nullopt) << path;
    EXPECT_FALSE(WriteRegularFile(path, "x")) << path;
  }
  EXPECT_EQ(ReadRegularFile(nullptr, 10), std::nullopt);
  EXPECT_FALSE(WriteRegularFile(nullptr, "x"));
}

TEST(RegularFile, LinkIsNotFollowed) {
  const test::TemporaryFolder folder;
  const std::string target = folder.WriteFile("target", "precious");
  const std::string link = folder.PathOf("link");
  ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);
  EXPECT_EQ(ReadRegularFile(link.c_str(), 10), std::nullopt);
  EXPECT_FALSE(WriteRegularFile(link.c_str(), "x"));
  EXPECT_EQ(test::ReadFile(target), "precious");
}

TEST(RegularFile, WritingCreatesAndReplaces) {
  const test::TemporaryFolder folder;
  const std::string path = folder.PathOf("file");
  EXPECT_TRUE(WriteRegularFile(path.c_str(), "a long text"));
  EXPECT_EQ(test::ReadFile(path), "a long text");
  EXPECT_TRUE(WriteRegularFile(path.c_str(), "short"));
  EXPECT_EQ(test::ReadFile(path), "short");
  EXPECT_TRUE(WriteRegularFile(path.c_str(), ""));
  EXPECT_EQ(test::ReadFile(path), "");
}

}  // namespace
}  // namespace zr7700
