// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/utility_notices.h"

#include <unistd.h>

#include <cstring>

#include "base/paths.h"
#include "status/device_relay.h"
#include "status/unix_socket.h"
#include "status/utility_connection.h"

namespace zr7700 {
namespace {

constexpr size_t kReplyBytes = 512;

struct Notice {
  const char* text;  // 17 characters
  bool offers_cartridge_change;
  bool offers_continuing;
  bool must_be_sent;  // else a failed send still waits for the reply
};

constexpr Notice kInkLow = {"InkLow___________", true, true, true};
constexpr Notice kInkMissingOrEmpty = {"InkMissingOrEmpty", true, false, true};
constexpr Notice kPaperNotLoaded = {"PaperNotLoaded___", false, true, false};
constexpr Notice kPrinterError = {"PrinterError_____", false, true, false};
constexpr Notice kAlignmentNeeded = {"AlignmentNeeded__", false, true, false};

// The person chose to go on printing with low ink.
bool InkLowContinued = false;

// The connection with its acknowledgement is itself the signal: it is closed at once.
bool SignalUtility() {
  if (!ConnectToUtility(paths::kUtilitySocket)) return false;
  DisconnectFromUtility();
  return true;
}

// Sends the notice's text and waits for what the person chose.
int ExchangeNotice(const Notice& notice, int connection) {
  const ssize_t sent = SendText(connection, notice.text);
  if (notice.must_be_sent ? sent <= 0 : sent == 0) return kNoticeNoReply;
  char reply[kReplyBytes + 1] = {};
  if (ReceiveBytes(connection, {reply, kReplyBytes}) <= 0) return kNoticeNoReply;
  if (notice.offers_cartridge_change && strcmp(reply, "ChangeCartridge") == 0) {
    return RelayDeviceData(connection);
  }
  if (notice.offers_continuing && strcmp(reply, "ContinuePrintJob") == 0) return kNoticeContinue;
  return kNoticeNoReply;
}

int SendNotice(const Notice& notice) {
  if (!SignalUtility()) return kNoticeNotReachable;
  const int connection = AcceptReply(paths::kReplySocket);
  if (connection < 0) return kNoticeNoReply;
  const int result = ExchangeNotice(notice, connection);
  close(connection);
  return result;
}

}  // namespace

int NotifyInkLow() {
  if (InkLowContinued) return kNoticeContinue;
  const int result = SendNotice(kInkLow);
  if (result == kNoticeContinue) InkLowContinued = true;
  return result;
}

int NotifyInkMissingOrEmpty() { return SendNotice(kInkMissingOrEmpty); }

int NotifyPaperNotLoaded() { return SendNotice(kPaperNotLoaded); }

int NotifyPrinterError(bool wait_for_reply) {
  if (wait_for_reply) return SendNotice(kPrinterError);
  return SignalUtility() ? kNoticeNoReply : kNoticeNotReachable;
}

int NotifyAlignmentNeeded() { return SendNotice(kAlignmentNeeded); }

}  // namespace zr7700
