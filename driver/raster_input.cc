// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/raster_input.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "base/cancel_signal.h"
#include "base/log.h"
#include "base/out_of_memory.h"

namespace zr7700 {
namespace {

// CUPS' own reading would begin an interrupted read anew and sit out the cancel. The context is the
// descriptor itself.
ssize_t ReadInput(void* context, unsigned char* buffer, size_t length) {
  const auto descriptor = static_cast<int>(reinterpret_cast<intptr_t>(context));
  while (WaitForInput(descriptor)) {
    const ssize_t count = read(descriptor, buffer, length);
    if (count >= 0 || (errno != EINTR && errno != EAGAIN)) return count;
  }
  errno = ECANCELED;
  return -1;
}

}  // namespace

std::unique_ptr<RasterStream> OpenRaster(const char* path) {
  int descriptor = STDIN_FILENO;
  if (path != nullptr) {
    // A FIFO without a writer is waited for where a cancel can end the wait.
    descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) {
      LogMessage(kLogDetail, "Unable to open raster file - %s", strerror(errno));
      return nullptr;
    }
  }
  // The reader's context is the descriptor itself. NOLINTNEXTLINE(performance-no-int-to-ptr)
  void* const context = reinterpret_cast<void*>(static_cast<intptr_t>(descriptor));
  const MemoryWatch watch;
  return std::make_unique<RasterStream>(ReadInput, context);
}

}  // namespace zr7700
