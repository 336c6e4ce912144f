// The fixture of tests that work on the process-wide job state.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_TESTS_SUPPORT_JOB_TEST_H_
#define ZR7700_TESTS_SUPPORT_JOB_TEST_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/job_state.h"
#include "tests/support/log_capture.h"

namespace zr7700::test {

// Starts every case with the state of a new process and an empty log.
class JobTest : public testing::Test {
 protected:
  ~JobTest() override { ResetJobState(); }

  std::vector<std::string> LogLines() const { return log_.Lines(); }

 private:
  // Comes before the log: giving back an earlier case's state may write a line.
  struct FreshState {
    FreshState() { ResetJobState(); }
  } fresh_state_;

 protected:
  LogCapture log_;
};

}  // namespace zr7700::test

#endif  // ZR7700_TESTS_SUPPORT_JOB_TEST_H_
