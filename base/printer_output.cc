// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/printer_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <mutex>

#include "base/log.h"
#include "base/whole_write.h"

namespace zr7700 {
namespace {

struct OutputBuffer {
  std::array<char, 4096> bytes;
  size_t used = 0;
  bool is_ended = false;
};

// Guards the buffer: the printer utility may talk to the printer from the status thread.
std::mutex mutex;
OutputBuffer buffer;

// What is written from now on is lost, and its reader sees the end.
void DiscardOutput() {
  LogMessage(kLogDetail, "     Nothing taken for 20 s after the cancel: output discarded");
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere < 0) return;
  dup2(nowhere, STDOUT_FILENO);
  close(nowhere);
}

void WriteBuffer() {
  const WriteEnd end = WriteWhole(STDOUT_FILENO, {buffer.bytes.data(), buffer.used});
  buffer.used = 0;
  if (end == WriteEnd::kGivenUp) DiscardOutput();
}

}  // namespace

void WritePrinterOutput(std::span<const uint8_t> bytes) {
  const std::lock_guard lock(mutex);
  while (!bytes.empty()) {
    if (buffer.used == buffer.bytes.size()) WriteBuffer();
    const size_t count = std::min(bytes.size(), buffer.bytes.size() - buffer.used);
    std::copy_n(bytes.begin(), count, buffer.bytes.begin() + buffer.used);
    buffer.used += count;
    bytes = bytes.subspan(count);
  }
  if (buffer.is_ended) WriteBuffer();
}

void FlushPrinterOutput() {
  const std::lock_guard lock(mutex);
  WriteBuffer();
}

bool FitsOutputBuffer(size_t count) {
  const std::lock_guard lock(mutex);
  return !buffer.is_ended && count <= buffer.bytes.size() - buffer.used;
}

bool HasBufferedOutput() {
  const std::lock_guard lock(mutex);
  return buffer.used > 0;
}

void EndOutputBuffer() {
  const std::lock_guard lock(mutex);
  WriteBuffer();
  buffer.is_ended = true;
}

}  // namespace zr7700
