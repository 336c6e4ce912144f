// The utility's end of the sockets, for tests.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_TEST_SOCKET_H_
#define ZR7700_STATUS_TEST_SOCKET_H_

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace zr7700::test {

// A stream socket that is closed with the object.
class Socket {
 public:
  explicit Socket(int descriptor = -1) : descriptor_(descriptor) {}
  ~Socket() { Close(); }
  Socket(Socket&& other) noexcept : descriptor_(other.Release()) {}
  Socket& operator=(Socket&&) = delete;
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  int get() const { return descriptor_; }
  int Release();
  void Close();

  // Sends these bytes; a text whose NUL is to be sent says so itself. Never raises SIGPIPE.
  void Send(std::string_view bytes) const;

  // What arrives next, up to 1024 bytes; "" at the peer's end, "TIMEOUT" after 5 seconds.
  std::string Receive() const;

  // The next `count` bytes, however many pieces they come in; fewer when no more arrive.
  std::string ReceiveAll(size_t count) const;

 private:
  int descriptor_;
};

// Listens at `path`; accepts with `Accept`, which waits up to 5 seconds.
class Listener {
 public:
  explicit Listener(const std::string& path, int backlog = 5);
  Socket Accept() const;

  // True when somebody is waiting to be accepted.
  bool HasCaller() const;

 private:
  Socket socket_;
};

// Connects to `path`, trying for up to 5 seconds until somebody listens.
Socket ConnectTo(const std::string& path);

// Both ends of a connection.
struct SocketPair {
  SocketPair();
  Socket filter;
  Socket utility;

 private:
  explicit SocketPair(const std::array<int, 2>& ends);
};

// Text with its NUL.
inline std::string WithNul(std::string_view text) { return std::string(text) + '\0'; }

}  // namespace zr7700::test

#endif  // ZR7700_STATUS_TEST_SOCKET_H_
