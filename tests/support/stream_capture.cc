// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/stream_capture.h"

#include <unistd.h>

#include <array>
#include <cstdlib>

#include "base/printer_output.h"

namespace zr7700::test {

StreamCapture::StreamCapture(FILE* stream)
    : stream_(stream), file_(tmpfile()), saved_descriptor_(dup(fileno(stream))) {
  fflush(stream_);
  if (file_ == nullptr || saved_descriptor_ < 0 || dup2(fileno(file_), fileno(stream_)) < 0) {
    perror("StreamCapture");
    abort();
  }
}

StreamCapture::~StreamCapture() {
  Restore();
  fclose(file_);
}

void StreamCapture::Restore() {
  if (saved_descriptor_ < 0) return;
  fflush(stream_);
  if (stream_ == stdout) FlushPrinterOutput();
  dup2(saved_descriptor_, fileno(stream_));
  close(saved_descriptor_);
  saved_descriptor_ = -1;
}

std::string StreamCapture::Take() {
  Restore();
  return Arrived();
}

std::string StreamCapture::Arrived() const {
  std::string text;
  std::array<char, 4096> piece;
  ssize_t count;
  while ((count = pread(fileno(file_), piece.data(), piece.size(),
                        static_cast<off_t>(text.size()))) > 0) {
    text.append(piece.data(), static_cast<size_t>(count));
  }
  return text;
}

}  // namespace zr7700::test
