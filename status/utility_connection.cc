// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/utility_connection.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "base/cancel_signal.h"
#include "base/log.h"
#include "base/pause.h"
#include "status/unix_socket.h"

namespace zr7700 {
namespace {

constexpr int kAckLimit_ms = 10'000;
constexpr std::chrono::milliseconds kConnectLimit(10'000);
constexpr int kConnectPause_ms = 20;
constexpr char kAck[] = {'A', 'c', 'k'};
constexpr int kBacklog = 2;
constexpr int kAcceptPause_ms = 100;

// Used by one thread at a time: the one that sends a notice.
int client_socket = -1;
int listening_socket = -1;
bool UtilityReachable = true;

std::atomic<bool> AcceptCancelled = false;

void CloseSocket(int& socket) {
  if (socket >= 0) close(socket);
  socket = -1;
}

void SetBlocking(int socket, bool blocking) {
  const int flags = fcntl(socket, F_GETFL);
  fcntl(socket, F_SETFL, blocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK);
}

// Asks again and again while the utility's backlog is full, since neither the socket nor poll tells
// when that is over.
bool Connect(const UnixAddress& address) {
  const auto start = std::chrono::steady_clock::now();
  while (connect(client_socket, address.get(), UnixAddress::kBytes) != 0) {
    if (errno != EAGAIN && errno != EINTR) return false;
    if (std::chrono::steady_clock::now() - start > kConnectLimit) return false;
    if (!Pause(kConnectPause_ms)) return false;
  }
  return true;
}

bool ReceiveAck() {
  if (WaitForInput(client_socket, kAckLimit_ms) != WaitEnd::kReady) return false;
  char answer[32];
  const ssize_t count = recv(client_socket, answer, sizeof answer, 0);
  return count >= ssize_t{sizeof kAck} && memcmp(answer, kAck, sizeof kAck) == 0;
}

// A cancelled job has nothing to tell any more.
bool ConnectAndWait(const char* path) {
  if (CancelRequested()) return false;
  client_socket = OpenUnixSocket();
  if (client_socket < 0) return false;
  // A utility whose backlog is full would hold a blocking socket up.
  SetBlocking(client_socket, false);
  if (!Connect(UnixAddress(path)) || !ReceiveAck()) return false;
  SetBlocking(client_socket, true);
  return true;
}

// A failed bind leaves the socket open; the next call takes a new one.
bool Listen(const char* path) {
  unlink(path);
  listening_socket = OpenUnixSocket();
  const UnixAddress address(path);
  if (bind(listening_socket, address.get(), UnixAddress::kBytes) != 0) {
    LogMessage(kLogDetail, "Bind failed %u", static_cast<unsigned>(errno));
    return false;
  }
  chmod(path, 0777);
  SetBlocking(listening_socket, false);
  listen(listening_socket, kBacklog);
  return true;
}

int AcceptConnection() {
  while (!AcceptCancelled.load() && !CancelRequested()) {
    const int connection = accept(listening_socket, nullptr, nullptr);
    if (connection >= 0) {
      SetBlocking(connection, true);
      return connection;
    }
    if (errno != EAGAIN && errno != EINTR) return -1;
    // A little, to look whether StopAccepting was called.
    WaitForInput(listening_socket, kAcceptPause_ms);
  }
  return -1;
}

}  // namespace

bool ConnectToUtility(const char* path) {
  if (!UtilityReachable) return false;
  if (ConnectAndWait(path)) return true;
  CloseSocket(client_socket);
  UtilityReachable = false;
  return false;
}

void DisconnectFromUtility() { CloseSocket(client_socket); }

int AcceptReply(const char* path) {
  if (!Listen(path)) return -1;
  const int connection = AcceptConnection();
  CloseSocket(listening_socket);
  return connection;
}

void StopAccepting() { AcceptCancelled = true; }

}  // namespace zr7700
