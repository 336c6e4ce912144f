// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/whole_write.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>

#include "base/cancel_signal.h"

namespace zr7700 {
namespace {

// What a pipe that says it has room takes without blocking.
constexpr size_t kPieceBytes = PIPE_BUF;

bool IsMomentary(int error) { return error == EINTR || error == EAGAIN || error == EWOULDBLOCK; }

}  // namespace

WriteEnd WriteWhole(int descriptor, std::span<const char> bytes) {
  while (!bytes.empty()) {
    if (!WaitForTaker(descriptor)) return WriteEnd::kGivenUp;
    const ssize_t count = write(descriptor, bytes.data(), std::min(bytes.size(), kPieceBytes));
    if (count > 0) {
      bytes = bytes.subspan(static_cast<size_t>(count));
    } else if (count == 0 || !IsMomentary(errno)) {
      return WriteEnd::kRefused;
    }
  }
  return WriteEnd::kWritten;
}

}  // namespace zr7700
