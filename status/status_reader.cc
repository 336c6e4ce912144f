// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/status_reader.h"

#include <algorithm>
#include <cmath>

#include "base/log.h"
#include "base/pause.h"
#include "platform/platform.h"
#include "status/back_channel.h"
#include "status/status_memory.h"

namespace zr7700 {
namespace {

constexpr double kRecordsPerSecond = 4.0 * 4.0;
constexpr int kMostDrained = 50;
constexpr double kDrainWait_s = 0.3;
constexpr double kLimit_s = 3.0;
constexpr int kRetryPause_ms = 100;

// A cancelled job waits for no more than one record, and no longer than this: long enough for a
// printer that is well, short enough for a silent one. Its last word is what stays shown.
constexpr double kLastRecordLimit_s = 0.5;

// Seconds on the platform's clock of the last valid record or of the last drain; 0 before either.
double LastStatusTime = 0.0;

// Throws up to `count` records away; false when the channel ran dry before that.
bool Drain(int count) {
  PrinterStatusRecord scratch;
  for (int i = 0; i < count; ++i) {
    if (ReadBackChannel(scratch, kDrainWait_s) != ssize_t{kStatusRecordBytes}) return false;
  }
  return true;
}

// How many records the printer has sent since the last one was read.
int RecordsSinceLastRead() {
  const double elapsed_s = std::min(platform::Now() - LastStatusTime, 1e6);
  return static_cast<int>(elapsed_s * kRecordsPerSecond);
}

void LogDrain(int count) {
  if (count > kMostDrained) {
    LogMessage(kLogMilestone, "!! ClearBackChannelBuffer times to read was %i.  SET TO 50", count);
  } else {
    LogMessage(kLogChannel, "ClearBackChannelBuffer times to read: %i", count);
  }
}

// Throws away what stands before the next record in the stream, so that the next read meets it.
void Realign(const PrinterStatusRecord& buffer, ssize_t count) {
  const std::optional<size_t> start = FindRecordStart(buffer, count);
  if (!start) return;
  LogMessage(kLogDetail, "Realigning Buffer: %i", static_cast<int>(*start));
  PrinterStatusRecord scratch;
  ReadBackChannel(std::span(scratch).first(*start), kDrainWait_s);
}

// One read; true when it brought a valid record.
bool TryToRead(PrinterStatusRecord& buffer) {
  const ssize_t count = ReadBackChannel(buffer, 0.0);
  LogMessage(kLogDetail, "     Read %i bytes cartridgeID: 0x%x", static_cast<int>(count),
             static_cast<uint8_t>(CartridgeLetter(buffer)));
  if (count == ssize_t{kStatusRecordBytes} && IsWellFormed(buffer)) return true;
  Realign(buffer, count);
  return false;
}

}  // namespace

bool ClearBackChannelBuffer() {
  LogMessage(kLogMilestone, "ClearBackChannelBuffer called");
  bool result = true;
  if (LastStatusTime != 0.0) {
    const int count = RecordsSinceLastRead();
    LogDrain(count);
    result = Drain(std::min(count, kMostDrained));
    LastStatusTime = platform::Now();
  }
  LogMessage(kLogChannel, "ClearBackChannelBuffer returning %d", result ? 1 : 0);
  return result;
}

bool ReadPrinterStatus(PrinterStatusRecord& record) {
  ClearBackChannelBuffer();
  // Whole seconds: the limit lies between 2 and 3 seconds of real time.
  const double start_s = std::floor(platform::Now());
  PrinterStatusRecord buffer = {};
  bool is_last_try = false;
  for (;;) {
    if (TryToRead(buffer)) {
      LastStatusTime = platform::Now();
      record = buffer;
      return true;
    }
    if (is_last_try) return false;
    if (platform::Now() - start_s > kLimit_s) {
      LogMessage(kLogDetail, "     ## TIMED OUT TRYING TO GET STATUS FOR 3s ##");
      return false;
    }
    is_last_try = !Pause(kRetryPause_ms);
    if (is_last_try) WaitForLastRecord(kLastRecordLimit_s);
  }
}

bool GetPrinterStatus(PrinterStatusRecord& record) {
  LogMessage(kLogDetail, "Getting Status");
  if (!ReadPrinterStatus(record)) {
    LogMessage(kLogDetail, "FAILED TO GET STATUS");
    return false;
  }
  LogMessage(kLogDetail, "Got Status");
  PublishStatus(record);
  return true;
}

}  // namespace zr7700
