// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/user_message.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace zr7700 {
namespace {

constexpr size_t kMostBytes = 1900;

// A line in the making, without memory from the heap: that there is none left may be what it says.
class Line {
 public:
  void Add(std::string_view text) {
    const size_t count = std::min(text.size(), sizeof bytes_ - size_);
    std::memcpy(bytes_ + size_, text.data(), count);
    size_ += count;
  }

  void AddPrintable(std::string_view text) {
    const size_t first = size_;
    Add(text.substr(0, kMostBytes));
    std::replace_if(
        bytes_ + first, bytes_ + size_,
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
  }

  void Write() const {
    // Nobody is left to be told when this fails.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, bytes_, size_);
  }

 private:
  char bytes_[kMostBytes + 32];
  size_t size_ = 0;
};

// Until whoever reads standard error has read what stands in the pipe, or a second has passed.
// Where a system does not count what waits at a pipe's writing end, this returns at once.
void WaitUntilRead() {
  constexpr int kStep_ms = 10;
  constexpr int kMostSteps = 100;
  int waiting_bytes = 0;
  for (int step = 0; step < kMostSteps; ++step) {
    if (ioctl(STDERR_FILENO, FIONREAD, &waiting_bytes) != 0 || waiting_bytes == 0) return;
    poll(nullptr, 0, kStep_ms);
  }
}

void Tell(std::string_view beginning, std::string_view sentence) {
  Line line;
  line.Add(beginning);
  line.AddPrintable(sentence);
  line.Add("\n");
  line.Write();
}

}  // namespace

void TellError(std::string_view sentence) {
  Tell("\nERROR: ", sentence);
  WaitUntilRead();
}

bool Refuse(std::string_view sentence) {
  TellError(sentence);
  return false;
}

void TellWarning(std::string_view sentence) { Tell("\nWARNING: ", sentence); }

void TellPage(unsigned page, unsigned copies) {
  char numbers[32];
  std::snprintf(numbers, sizeof numbers, "%u %u", page, copies);
  Tell("\nPAGE: ", numbers);
}

}  // namespace zr7700
