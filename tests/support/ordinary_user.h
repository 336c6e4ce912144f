// The process as somebody who may not read and write everything.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_TESTS_SUPPORT_ORDINARY_USER_H_
#define ZR7700_TESTS_SUPPORT_ORDINARY_USER_H_

#include <gtest/gtest.h>
#include <unistd.h>

namespace zr7700::test {

// While one lives the superuser's process is an ordinary user's; no effect on anybody else's.
class OrdinaryUser {
 public:
  OrdinaryUser() : was_root_(geteuid() == 0) {
    if (was_root_) {
      EXPECT_EQ(seteuid(65534), 0);
    }
  }
  ~OrdinaryUser() {
    if (was_root_) {
      EXPECT_EQ(seteuid(0), 0);
    }
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  const bool was_root_;
};

}  // namespace zr7700::test

#endif  // ZR7700_TESTS_SUPPORT_ORDINARY_USER_H_
