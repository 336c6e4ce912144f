// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/device_relay.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>

#include "base/log.h"
#include "base/printer_output.h"
#include "status/back_channel.h"
#include "status/unix_socket.h"

namespace zr7700 {
namespace {

constexpr size_t kBufferBytes = 512;
constexpr double kReadLimit_s = 5.0;
constexpr char kOk[] = "OK";
constexpr int kChanged = 1;
constexpr int kFailed = -1;

// One buffer serves a command, then its data. The byte behind it ends a command's text.
using Buffer = char[kBufferBytes + 1];

std::span<char> DataOf(Buffer& buffer) { return {buffer, kBufferBytes}; }

void Clear(Buffer& buffer) { std::fill(std::begin(buffer), std::end(buffer), '\0'); }

// The count behind a command's name, 0 when there is none, held to the buffer.
size_t CountOf(std::string_view command, std::string_view name) {
  const long count = strtol(command.data() + name.size(), nullptr, 10);
  return static_cast<size_t>(std::clamp(count, 0L, static_cast<long>(kBufferBytes)));
}

bool Acknowledge(int connection) { return SendText(connection, kOk) != 0; }

void ReadFromPrinter(int connection, size_t count, Buffer& buffer) {
  LogMessage(kLogMilestone, "READ_DEVICE_DATA");
  if (!Acknowledge(connection)) return;
  LogMessage(kLogMilestone, "Reading data from printer");
  const std::span<uint8_t> data(reinterpret_cast<uint8_t*>(buffer), count);
  if (ReadBackChannel(data, kReadLimit_s) == static_cast<ssize_t>(count)) {
    SendBytes(connection, DataOf(buffer).first(count));
  }
  LogMessage(kLogMilestone, "read %d", static_cast<int>(count));
}

void WriteToPrinter(int connection, size_t count, Buffer& buffer) {
  LogMessage(kLogDetail, "WRITE_DEVICE_DATA");
  if (!Acknowledge(connection)) return;
  Clear(buffer);
  if (ReceiveBytes(connection, DataOf(buffer)) > 0) {
    LogMessage(kLogMilestone, "Writing data to printer");
    WritePrinterOutput({reinterpret_cast<const uint8_t*>(buffer), count});
    FlushPrinterOutput();
  }
  Acknowledge(connection);
}

}  // namespace

int RelayDeviceData(int connection) {
  constexpr std::string_view kRead = "ReadDeviceData";
  constexpr std::string_view kWrite = "WriteDeviceData";
  constexpr std::string_view kComplete = "ChangeCartridgeComplete";
  LogMessage(kLogMilestone, "Change cartridge response");
  Buffer buffer;
  for (;;) {
    Clear(buffer);
    if (ReceiveBytes(connection, DataOf(buffer)) <= 0) return kFailed;
    const std::string_view command(buffer);
    if (command.starts_with(kRead)) {
      ReadFromPrinter(connection, CountOf(command, kRead), buffer);
    } else if (command.starts_with(kWrite)) {
      WriteToPrinter(connection, CountOf(command, kWrite), buffer);
    } else if (command.starts_with(kComplete)) {
      return kChanged;
    } else {
      LogMessage(kLogMilestone, "Unknown cmd");
      LogMessage(kLogMilestone, "%s", buffer);
      return kFailed;
    }
  }
}

}  // namespace zr7700
