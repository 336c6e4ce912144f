// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/back_channel.h"

#include <cups/sidechannel.h>
#include <fcntl.h>
#include <unistd.h>

#include "base/cancel_signal.h"
#include "base/pause.h"

namespace zr7700 {
namespace {

constexpr int kBackChannel = 3;

// Written by PrepareBackChannel, constant afterwards.
bool is_open = false;

bool IsOpen(int descriptor) { return fcntl(descriptor, F_GETFD) != -1; }

}  // namespace

void PrepareBackChannel() {
  is_open = IsOpen(kBackChannel);
  for (int descriptor = 0; descriptor <= kBackChannel; ++descriptor) {
    // The lowest free number is this one.
    if (!IsOpen(descriptor)) (void)open("/dev/null", O_RDWR);
  }
  // The library's read would spin on a closed channel and ignore its time-out on a blocking one.
  if (is_open) fcntl(kBackChannel, F_SETFL, fcntl(kBackChannel, F_GETFL) | O_NONBLOCK);
}

ssize_t ReadBackChannel(std::span<uint8_t> buffer, double timeout_s) {
  const int timeout_ms = static_cast<int>(timeout_s * 1e3);
  if (!is_open) {
    Pause(timeout_ms);
    return -1;
  }
  // Waited for here, where a cancel ends the waiting, and not by the library.
  if (timeout_ms > 0) WaitForInput(kBackChannel, timeout_ms);
  return cupsBackChannelRead(reinterpret_cast<char*>(buffer.data()), buffer.size(), 0.0);
}

void WaitForLastRecord(double limit_s) {
  if (is_open) WaitForLastInput(kBackChannel, static_cast<int>(limit_s * 1e3));
}

}  // namespace zr7700
