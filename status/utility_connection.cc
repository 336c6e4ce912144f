// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/utility_connection.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

#include "base/cancel_signal.h"
#include "base/log.h"
#include "status/unix_socket.h"

namespace zr7700 {
namespace {

constexpr time_t kAckLimit_s = 10;
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

void SetTimeOuts(int socket, time_t seconds) {
  const timeval limit = {.tv_sec = seconds, .tv_usec = 0};
  setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
}

bool ReceiveAck(int socket) {
  char answer[32];
  const ssize_t count = recv(socket, answer, sizeof answer, 0);
  return count >= ssize_t{sizeof kAck} && memcmp(answer, kAck, sizeof kAck) == 0;
}

bool ConnectAndWait(const char* path) {
  client_socket = OpenUnixSocket();
  if (client_socket < 0) return false;
  // Set before connecting too: a utility whose backlog is full would hold the job up.
  SetTimeOuts(client_socket, kAckLimit_s);
  const UnixAddress address(path);
  if (connect(client_socket, address.get(), UnixAddress::kBytes) != 0) return false;
  if (!ReceiveAck(client_socket)) return false;
  SetTimeOuts(client_socket, 0);
  return true;
}

void SetBlocking(int socket, bool blocking) {
  const int flags = fcntl(socket, F_GETFL);
  fcntl(socket, F_SETFL, blocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK);
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

// Waits a little for a connection, so that asking again does not burn a processor.
void PauseForConnection() {
  pollfd watched = {listening_socket, POLLIN, 0};
  poll(&watched, 1, kAcceptPause_ms);
}

int AcceptConnection() {
  while (!AcceptCancelled.load() && !CancelRequested()) {
    const int connection = accept(listening_socket, nullptr, nullptr);
    if (connection >= 0) {
      SetBlocking(connection, true);
      return connection;
    }
    if (errno != EAGAIN && errno != EINTR) return -1;
    PauseForConnection();
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
