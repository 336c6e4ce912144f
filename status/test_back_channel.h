// Descriptor 3 in the hands of a test.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_TEST_BACK_CHANNEL_H_
#define ZR7700_STATUS_TEST_BACK_CHANNEL_H_

#include <cstdint>
#include <span>

namespace zr7700::test {

// While one lives, descriptor 3 is the read end of a pipe, prepared as the job does it. Before and
// afterwards it is the null device, so that no other file takes its number.
class BackChannel {
 public:
  BackChannel();
  ~BackChannel();
  BackChannel(const BackChannel&) = delete;
  BackChannel& operator=(const BackChannel&) = delete;

  // Lets the printer say these bytes; they must fit the pipe, 64 KiB.
  void Send(std::span<const uint8_t> bytes) const;

  // The bytes sent and not read yet.
  int Unread() const;

  // The printer's end closes.
  void Close();

 private:
  int write_end_;
};

}  // namespace zr7700::test

#endif  // ZR7700_STATUS_TEST_BACK_CHANNEL_H_
