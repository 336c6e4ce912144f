// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/unix_socket.h"

#include <fcntl.h>

#include <cstring>
#include <string>

#include "base/cancel_signal.h"

namespace zr7700 {
namespace {

constexpr size_t kPathCharacters = 103;

#ifdef MSG_NOSIGNAL
constexpr int kNoSignal = MSG_NOSIGNAL;
#else
constexpr int kNoSignal = 0;  // the socket option says it there
#endif

}  // namespace

UnixAddress::UnixAddress(const char* path) {
  const size_t length = strnlen(path, kPathCharacters);
  address_.sun_family = AF_UNIX;
  memcpy(address_.sun_path, path, length);
#ifdef __APPLE__
  address_.sun_len = static_cast<unsigned char>(length + 2);
#endif
}

const sockaddr* UnixAddress::get() const { return reinterpret_cast<const sockaddr*>(&address_); }

int OpenUnixSocket() {
  const int opened = socket(AF_UNIX, SOCK_STREAM, 0);
  if (opened < 0) return -1;
  fcntl(opened, F_SETFD, FD_CLOEXEC);
#ifdef SO_NOSIGPIPE
  const int on = 1;
  setsockopt(opened, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
  return opened;
}

ssize_t SendBytes(int socket, std::span<const char> bytes) {
  if (!WaitForRoom(socket)) return -1;
  return send(socket, bytes.data(), bytes.size(), kNoSignal);
}

ssize_t SendText(int socket, std::string_view text) {
  const std::string ended(text);
  return SendBytes(socket, {ended.c_str(), ended.size() + 1});
}

ssize_t ReceiveBytes(int socket, std::span<char> buffer) {
  if (!WaitForInput(socket)) return -1;
  return recv(socket, buffer.data(), buffer.size(), 0);
}

}  // namespace zr7700
