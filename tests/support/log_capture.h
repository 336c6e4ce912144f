// The diagnostic log of a test, read back line by line without its dates.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_TESTS_SUPPORT_LOG_CAPTURE_H_
#define ZR7700_TESTS_SUPPORT_LOG_CAPTURE_H_

#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace zr7700::test {

// Sends the process's log to a file of its own from here on; a later capture takes over. After the
// object's end the log's lines are lost.
class LogCapture {
 public:
  explicit LogCapture(int threshold = 5);

  // The messages so far, in order, without date and "\r\n". A "\n" at a message's end stays. A line
  // that does not begin with a date comes back whole, marked with "NO DATE: ".
  std::vector<std::string> Lines() const;

  // Forgets the lines so far.
  void Clear();

  std::string path() const { return folder_.PathOf("filter.log"); }

 private:
  TemporaryFolder folder_;
};

}  // namespace zr7700::test

#endif  // ZR7700_TESTS_SUPPORT_LOG_CAPTURE_H_
