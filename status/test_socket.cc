// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/test_socket.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <thread>
#include <utility>

namespace zr7700::test {
namespace {

constexpr int kPatience_ms = 5000;

sockaddr_un AddressOf(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  EXPECT_LT(path.size(), sizeof address.sun_path);
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  return address;
}

bool HasInput(int descriptor, int patience_ms) {
  pollfd watched = {descriptor, POLLIN, 0};
  return poll(&watched, 1, patience_ms) == 1;
}

}  // namespace

int Socket::Release() { return std::exchange(descriptor_, -1); }

void Socket::Close() {
  if (descriptor_ >= 0) close(Release());
}

void Socket::Send(std::string_view bytes) const {
  send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

std::string Socket::Receive() const {
  if (!HasInput(descriptor_, kPatience_ms)) return "TIMEOUT";
  std::array<char, 1024> bytes;
  const ssize_t count = recv(descriptor_, bytes.data(), bytes.size(), 0);
  return count > 0 ? std::string(bytes.data(), static_cast<size_t>(count)) : "";
}

std::string Socket::ReceiveAll(size_t count) const {
  std::string all;
  while (all.size() < count && HasInput(descriptor_, kPatience_ms)) {
    std::string piece(count - all.size(), '\0');
    const ssize_t received = recv(descriptor_, piece.data(), piece.size(), 0);
    if (received <= 0) break;
    all.append(piece, 0, static_cast<size_t>(received));
  }
  return all;
}

Listener::Listener(const std::string& path, int backlog)
    : socket_(socket(AF_UNIX, SOCK_STREAM, 0)) {
  const sockaddr_un address = AddressOf(path);
  EXPECT_EQ(bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(listen(socket_.get(), backlog), 0);
}

bool Listener::HasCaller() const { return HasInput(socket_.get(), 0); }

Socket Listener::Accept() const {
  EXPECT_TRUE(HasInput(socket_.get(), kPatience_ms));
  return Socket(accept(socket_.get(), nullptr, nullptr));
}

Socket ConnectTo(const std::string& path) {
  const sockaddr_un address = AddressOf(path);
  for (int i = 0; i < kPatience_ms; i++) {
    Socket caller(socket(AF_UNIX, SOCK_STREAM, 0));
    if (connect(caller.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
      return caller;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  ADD_FAILURE() << "nobody listens at " << path;
  return Socket();
}

SocketPair::SocketPair()
    : SocketPair([] {
        std::array<int, 2> ends = {-1, -1};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
        return ends;
      }()) {}

SocketPair::SocketPair(const std::array<int, 2>& ends) : filter(ends[0]), utility(ends[1]) {}

}  // namespace zr7700::test
