// The device-data relay against any bytes from the other end, in any pieces: it ends, it writes to
// the printer no more than its buffer for every command, and it answers only what the protocol has.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/input.h"
#include "status/back_channel.h"
#include "status/device_relay.h"

namespace {

using zr7700::fuzz::Require;

constexpr size_t kMostBytes = 9'000;

// Standard output as a file in memory, while it lives.
class PrinterOutput {
 public:
  PrinterOutput() : saved_(dup(1)), file_(memfd_create("printer", MFD_CLOEXEC)) {
    fflush(stdout);
    Require(dup2(file_, 1) == 1);
  }
  ~PrinterOutput() {
    fflush(stdout);
    dup2(saved_, 1);
    close(saved_);
    close(file_);
  }
  size_t bytes() const { return static_cast<size_t>(lseek(file_, 0, SEEK_END)); }

 private:
  int saved_;
  int file_;
};

size_t CountOf(std::string_view word, std::string_view text) {
  size_t count = 0;
  for (size_t at = text.find(word); at != text.npos; at = text.find(word, at + 1)) ++count;
  return count;
}

// The printer has nothing to say and has closed.
void SetUpPrinter() {
  const int null = open("/dev/null", O_RDWR);
  dup2(null, 3);
  zr7700::PrepareBackChannel();
}

// Says everything at once and closes its sending end, so that the relay never waits.
int RelayOf(std::string_view said, std::string& answers) {
  int ends[2];
  Require(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) == 0);
  // Pieces of up to 512 bytes, ended by a NUL or by their size, arrive one at a time.
  while (!said.empty()) {
    const size_t nul = said.substr(0, 511).find('\0');
    const size_t piece = nul == said.npos ? std::min<size_t>(said.size(), 512) : nul + 1;
    if (send(ends[1], said.data(), piece, MSG_NOSIGNAL | MSG_DONTWAIT) < 0) break;
    said.remove_prefix(piece);
  }
  shutdown(ends[1], SHUT_WR);
  const int result = zr7700::RelayDeviceData(ends[0]);
  close(ends[0]);
  char bytes[1024];
  ssize_t count;
  while ((count = recv(ends[1], bytes, sizeof bytes, MSG_DONTWAIT)) > 0) {
    answers.append(bytes, static_cast<size_t>(count));
  }
  close(ends[1]);
  return result;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  [[maybe_unused]] static const bool ready = (SetUpPrinter(), true);
  const std::string said(data, data + std::min(bytes, kMostBytes));
  std::string answers;
  const PrinterOutput printer;
  const int result = RelayOf(said, answers);
  Require(result == 1 || result == -1);
  Require(printer.bytes() <= 512 * CountOf("WriteDeviceData", said));
  // Nothing but "OK" and its NUL, since the printer is silent.
  Require(answers.size() % 3 == 0);
  for (size_t i = 0; i < answers.size(); i += 3) {
    Require(answers.compare(i, 3, std::string_view("OK\0", 3)) == 0);
  }
  return 0;
}
