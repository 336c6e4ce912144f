// What a piece of code writes to standard error or standard output.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_TESTS_SUPPORT_STREAM_CAPTURE_H_
#define ZR7700_TESTS_SUPPORT_STREAM_CAPTURE_H_

#include <cstdio>
#include <string>

namespace zr7700::test {

// Turns a standard stream, descriptor and all, into a temporary file until Take or the object's
// end. The stream is flushed on both occasions.
class StreamCapture {
 public:
  explicit StreamCapture(FILE* stream);
  ~StreamCapture();
  StreamCapture(const StreamCapture&) = delete;
  StreamCapture& operator=(const StreamCapture&) = delete;

  // Flushes the stream and gives it back what it was; returns all that was written meanwhile.
  std::string Take();

  // What has reached the descriptor so far: what the stream still buffers is not in it.
  std::string Arrived() const;

 private:
  void Restore();

  FILE* stream_;
  FILE* file_;
  int saved_descriptor_;
};

struct StderrCapture : StreamCapture {
  StderrCapture() : StreamCapture(stderr) {}
};

struct StdoutCapture : StreamCapture {
  StdoutCapture() : StreamCapture(stdout) {}
};

}  // namespace zr7700::test

#endif  // ZR7700_TESTS_SUPPORT_STREAM_CAPTURE_H_
