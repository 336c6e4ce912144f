// The CUPS back channel, descriptor 3, made safe to read.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_BACK_CHANNEL_H_
#define ZR7700_STATUS_BACK_CHANNEL_H_

#include <sys/types.h>

#include <cstdint>
#include <span>

namespace zr7700 {

// Fills the closed ones of the descriptors 0 to 3 with the null device, so that no file opened
// later can pass for a standard stream or for the printer, and makes the back channel non-blocking.
// Main thread, before anything else is opened.
void PrepareBackChannel();

// Reads up to `buffer.size()` bytes, waiting up to `timeout_s` seconds for the first of them. The
// number of bytes read, 0 at the channel's end, or -1 when nothing came. A channel that was closed
// when the job began is a printer that never answers: -1, after the wait. A cancel ends the wait;
// what has come by then is read. One thread at a time.
ssize_t ReadBackChannel(std::span<uint8_t> buffer, double timeout_s);

// Waits up to `limit_s` seconds for bytes, cancelled or not. One thread at a time.
void WaitForLastRecord(double limit_s);

}  // namespace zr7700

#endif  // ZR7700_STATUS_BACK_CHANNEL_H_
