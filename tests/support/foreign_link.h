// A symbolic link of somebody who is neither root nor this process's user.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_TESTS_SUPPORT_FOREIGN_LINK_H_
#define ZR7700_TESTS_SUPPORT_FOREIGN_LINK_H_

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

namespace zr7700::test {

// Makes the link and returns its path. Root's processes only.
inline std::string ForeignLink(const std::string& path, const std::string& target) {
  constexpr uid_t kNobody = 65534;
  EXPECT_EQ(symlink(target.c_str(), path.c_str()), 0);
  EXPECT_EQ(lchown(path.c_str(), kNobody, kNobody), 0);
  return path;
}

}  // namespace zr7700::test

#endif  // ZR7700_TESTS_SUPPORT_FOREIGN_LINK_H_
