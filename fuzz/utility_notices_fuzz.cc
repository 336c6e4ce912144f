// The notices to a printer utility that answers what it likes, in any pieces, or refuses, or hangs
// up: every notice ends, comes to the result that the utility's words stand for, says to it only
// what the protocol has, and leaves no connection open.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/captured_output.h"
#include "fuzz/input.h"
#include "fuzz/open_descriptors.h"
#include "status/back_channel.h"

// The sources themselves: what they remember for the process must be forgotten from run to run.
#include "status/utility_connection.cc"
#include "status/utility_notices.cc"

namespace zr7700 {
namespace {

using fuzz::Require;

constexpr size_t kMostPieceBytes = 600;
constexpr size_t kMostPieces = 24;

using Pieces = std::vector<std::string>;

// What the utility does with one notice.
struct Utility {
  bool refuses = false;      // to be connected to
  std::string ack;           // in one piece; it hangs up behind it
  bool bind_fails = false;   // somebody else's socket is in the way
  int polls_until_it_calls;  // accepting finds nobody so often
  bool breaks_off = false;   // the connection is gone before it is accepted
  bool is_deaf = false;      // it has shut its receiving end
  Pieces pieces;
};
Utility utility;

// The utility's ends of the connections, and how often it has been looked for.
struct Ends {
  int acked = -1;
  int reply = -1;
  int attempts = 0;
};
Ends ends;

struct NoticeRow {
  int (*notify)();
  const char* text;
  bool waits;
  bool continues;
  bool changes;
};

constexpr NoticeRow kNotices[] = {
    {NotifyInkLow, "InkLow___________", true, true, true},
    {NotifyInkMissingOrEmpty, "InkMissingOrEmpty", true, false, true},
    {NotifyPaperNotLoaded, "PaperNotLoaded___", true, true, false},
    {[] { return NotifyPrinterError(true); }, "PrinterError_____", true, true, false},
    {[] { return NotifyPrinterError(false); }, "", false, false, false},
    {NotifyAlignmentNeeded, "AlignmentNeeded__", true, true, false},
};

std::string TakePiece(fuzz::Input& input) {
  static constexpr std::string_view kWords[] = {"ContinuePrintJob",
                                                "ChangeCartridge",
                                                "ChangeCartridgeComplete",
                                                "ReadDeviceData ",
                                                "WriteDeviceData ",
                                                "Ack",
                                                "OK"};
  const uint8_t kind = input.U8();
  std::string piece;
  if (kind % 8 < std::size(kWords)) piece = kWords[kind % 8];
  if ((kind & 8) != 0) piece += std::to_string(static_cast<int16_t>(input.U16()));
  if ((kind & 16) != 0) {
    for (unsigned count = input.U8() * 2U; count > 0; --count) {
      piece += static_cast<char>(input.U8());
    }
  }
  if ((kind & 32) != 0) piece += '\0';
  piece.resize(std::min(piece.size(), kMostPieceBytes));
  return piece;
}

void TakeUtility(fuzz::Input& input) {
  const uint8_t kind = input.U8();
  utility = {};
  utility.refuses = kind % 8 == 1;
  utility.ack = kind % 8 == 2 ? TakePiece(input) : "Ack";
  utility.bind_fails = kind % 8 == 3;
  utility.breaks_off = kind % 8 == 4;
  utility.is_deaf = kind % 8 == 5;
  utility.polls_until_it_calls = kind % 8 == 6 ? 3 : 0;
  for (size_t i = 0; i < kMostPieces && !input.Rest().empty(); ++i) {
    utility.pieces.push_back(TakePiece(input));
  }
}

// A connection whose other end has said all that it will ever say, one piece a reading.
int ConnectionSaying(std::span<const std::string> pieces, int& other_end) {
  std::array<int, 2> pair;
  Require(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair.data()) == 0);
  for (const std::string& piece : pieces) {
    if (send(pair[1], piece.data(), piece.size(), MSG_NOSIGNAL | MSG_DONTWAIT) < 0) break;
  }
  shutdown(pair[1], SHUT_WR);
  if (utility.is_deaf) shutdown(pair[1], SHUT_RD);
  other_end = pair[1];
  return pair[0];
}

// An end that closes with words unread resets the connection: what it had said comes after that.
std::string HeardAt(int end) {
  std::string heard;
  for (;;) {
    char bytes[1024];
    const ssize_t count = recv(end, bytes, sizeof bytes, MSG_DONTWAIT);
    if (count < 0 && errno == ECONNRESET) continue;
    if (count <= 0) return heard;
    heard.append(bytes, static_cast<size_t>(count));
  }
}

// What a run must have come to, by the utility's words alone.
struct Expected {
  int result = kNoticeNoReply;
  bool relays = false;  // the device data had their turn: changed, or no reply
};

Expected ExpectedOf(const NoticeRow& notice) {
  if (utility.refuses || !utility.ack.starts_with("Ack")) return {kNoticeNotReachable};
  if (!notice.waits || utility.bind_fails || utility.breaks_off) return {};
  if (utility.pieces.empty() || utility.pieces[0].empty()) return {};
  // The two notices of the ink are given up when they cannot be sent.
  if (utility.is_deaf && notice.changes) return {};
  const std::string reply(utility.pieces[0].substr(0, 512).c_str());
  if (notice.changes && reply == "ChangeCartridge") return {kNoticeNoReply, true};
  if (notice.continues && reply == "ContinuePrintJob") return {kNoticeContinue};
  return {};
}

bool SaysSomewhere(std::string_view word) {
  return std::any_of(utility.pieces.begin(), utility.pieces.end(),
                     [&](const std::string& piece) { return piece.starts_with(word); });
}

void RequireResult(const NoticeRow& notice, int result) {
  const Expected expected = ExpectedOf(notice);
  if (!expected.relays) return Require(result == expected.result);
  Require(result == kNoticeNoReply || result == kNoticeCartridgeChanged);
  if (result == kNoticeCartridgeChanged) Require(SaysSomewhere("ChangeCartridgeComplete"));
}

// The notice with its NUL, and behind it nothing but "OK" with its own: the printer is silent.
void RequireWords(const NoticeRow& notice) {
  if (ends.acked >= 0) Require(HeardAt(ends.acked).empty());
  if (ends.reply < 0) return;
  std::string heard = HeardAt(ends.reply);
  if (utility.is_deaf) return Require(heard.empty());
  const std::string_view text(notice.text, 18);
  Require(heard.starts_with(text));
  heard.erase(0, text.size());
  Require(heard.size() % 3 == 0);
  for (size_t at = 0; at < heard.size(); at += 3) {
    Require(heard.compare(at, 3, std::string_view("OK\0", 3)) == 0);
  }
}

void RequirePrinterBytes(const std::string& written) {
  const auto writes =
      std::count_if(utility.pieces.begin(), utility.pieces.end(),
                    [](const std::string& piece) { return piece.starts_with("WriteDeviceData"); });
  Require(written.size() <= 512 * static_cast<size_t>(writes));
}

// Once out of reach, always out of reach; once told to go on, never asked again.
void RequireMemory(const NoticeRow& notice, int result) {
  ends.attempts = 0;
  if (result == kNoticeNotReachable) {
    for (const NoticeRow& other : kNotices) Require(other.notify() == kNoticeNotReachable);
    Require(ends.attempts == 0);
  }
  if (notice.notify == NotifyInkLow && result == kNoticeContinue) {
    Require(NotifyInkLow() == kNoticeContinue && ends.attempts == 0);
  }
}

void Forget() {
  UtilityReachable = true;
  InkLowContinued = false;
  // A failed bind leaves it open for good.
  if (utility.bind_fails) CloseSocket(listening_socket);
  for (int* end : {&ends.acked, &ends.reply}) {
    if (*end >= 0) close(*end);
  }
  ends = {};
}

// The printer has nothing to say.
bool SetUpPrinter() {
  const int null = open("/dev/null", O_RDWR);
  dup2(null, 3);
  PrepareBackChannel();
  return true;
}

}  // namespace
}  // namespace zr7700

// Linked in the place of the system's. Of listening and of the paths the sources' own calls come to
// nothing: there is no such folder.
extern "C" int __wrap_connect(int socket, const sockaddr*, socklen_t) {
  using namespace zr7700;
  ++ends.attempts;
  if (utility.refuses) return errno = ECONNREFUSED, -1;
  const int connection = ConnectionSaying({&utility.ack, 1}, ends.acked);
  dup2(connection, socket);
  close(connection);
  return 0;
}
extern "C" int __wrap_bind(int, const sockaddr*, socklen_t) {
  return zr7700::utility.bind_fails ? (errno = EADDRINUSE, -1) : 0;
}
extern "C" int __wrap_accept(int, sockaddr*, socklen_t*) {
  using namespace zr7700;
  if (utility.polls_until_it_calls-- > 0) return errno = EAGAIN, -1;
  if (utility.breaks_off) return errno = ECONNABORTED, -1;
  return ConnectionSaying(utility.pieces, ends.reply);
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  using namespace zr7700;
  [[maybe_unused]] static const bool ready = SetUpPrinter();
  fuzz::Input input(data, bytes);
  const NoticeRow& notice = kNotices[input.U8() % std::size(kNotices)];
  TakeUtility(input);
  const uint32_t open_before = fuzz::OpenDescriptors();
  fuzz::ForgetOutput();
  const int result = notice.notify();
  RequireResult(notice, result);
  RequireWords(notice);
  RequirePrinterBytes(fuzz::Printed());
  RequireMemory(notice, result);
  Forget();
  Require(fuzz::told.empty() && fuzz::OpenDescriptors() == open_before);
  return 0;
}
