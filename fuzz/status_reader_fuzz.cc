// The status reader over any bytes that a printer may say: a record that it hands out is a sound
// one that stands in those bytes, and every read ends.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <vector>

#include "base/pause.h"
#include "fuzz/input.h"
#include "platform/platform.h"
#include "status/back_channel.h"
#include "status/status_reader.h"

// A clock of its own, which leaps with every look, so that nothing is waited for in earnest.
namespace zr7700::platform {
double Now() {
  static double now_s = 1.0;
  return now_s += 0.4;
}
}  // namespace zr7700::platform

// In the place of pause.cc.
bool zr7700::Pause(int) { return true; }

namespace {

using zr7700::PrinterStatusRecord;
using zr7700::fuzz::Require;

constexpr int kBackChannel = 3;
constexpr size_t kMostBytes = 16'000;  // less than a pipe holds

// The printer's end is closed again before the reading: no read waits.
void FillBackChannel(std::span<const uint8_t> bytes) {
  int ends[2];
  Require(pipe(ends) == 0);
  Require(write(ends[1], bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
  close(ends[1]);
  if (ends[0] != kBackChannel) {
    Require(dup2(ends[0], kBackChannel) == kBackChannel);
    close(ends[0]);
  }
  zr7700::PrepareBackChannel();
}

bool IsSound(const PrinterStatusRecord& record) {
  const unsigned sum = std::accumulate(record.begin() + 1, record.begin() + 142, 0U);
  return record[0] == 0x01 && record[143] == 0x04 && record[142] == sum % 256;
}

bool StandsIn(std::span<const uint8_t> bytes, const PrinterStatusRecord& record) {
  return std::search(bytes.begin(), bytes.end(), record.begin(), record.end()) != bytes.end();
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  const std::span<const uint8_t> said(data, std::min(bytes, kMostBytes));
  FillBackChannel(said);
  PrinterStatusRecord untouched;
  untouched.fill(0xA5);
  for (int i = 0; i < 3; ++i) {
    PrinterStatusRecord record = untouched;
    if (zr7700::GetPrinterStatus(record)) {
      Require(IsSound(record) && StandsIn(said, record));
    } else {
      Require(record == untouched);
    }
  }
  return 0;
}
