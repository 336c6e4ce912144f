// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/test_back_channel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "status/back_channel.h"

namespace zr7700::test {
namespace {

constexpr int kDescriptor = 3;

void MakeNull() {
  const int null = open("/dev/null", O_RDWR);
  if (null == kDescriptor) return;
  dup2(null, kDescriptor);
  close(null);
}

[[maybe_unused]] const bool reserved = [] {
  if (fcntl(kDescriptor, F_GETFD) == -1) MakeNull();
  return true;
}();

}  // namespace

BackChannel::BackChannel() : write_end_(-1) {
  int ends[2] = {-1, -1};
  EXPECT_EQ(pipe(ends), 0);
  EXPECT_EQ(dup2(ends[0], kDescriptor), kDescriptor);
  close(ends[0]);
  write_end_ = ends[1];
  PrepareBackChannel();
}

BackChannel::~BackChannel() {
  Close();
  MakeNull();
}

void BackChannel::Send(std::span<const uint8_t> bytes) const {
  EXPECT_EQ(write(write_end_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

int BackChannel::Unread() const {
  int count = -1;
  EXPECT_EQ(ioctl(kDescriptor, FIONREAD, &count), 0);
  return count;
}

void BackChannel::Close() {
  if (write_end_ >= 0) close(write_end_);
  write_end_ = -1;
}

}  // namespace zr7700::test
