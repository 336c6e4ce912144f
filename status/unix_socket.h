// Unix-domain stream sockets as the utility protocol uses them.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_UNIX_SOCKET_H_
#define ZR7700_STATUS_UNIX_SOCKET_H_

#include <sys/socket.h>
#include <sys/types.h>
#include <sys/un.h>

#include <cstddef>
#include <span>
#include <string_view>

namespace zr7700 {

// A socket's address: `path` up to 103 characters, in an address of 106 bytes.
struct UnixAddress {
  explicit UnixAddress(const char* path);
  const sockaddr* get() const;
  static constexpr socklen_t kBytes = 106;

 private:
  sockaddr_un address_ = {};
};

// A new stream socket, not inherited by other programs; -1 when there is none.
int OpenUnixSocket();

// Sends `text` and its NUL without ever raising SIGPIPE, once the peer has room for it. The number
// of bytes sent, or -1 after an error or when the job's cancel is requested.
ssize_t SendText(int socket, std::string_view text);

// Sends bytes, likewise.
ssize_t SendBytes(int socket, std::span<const char> bytes);

// Waits until the peer has sent something and receives up to `buffer.size()` bytes. 0 when the peer
// has closed, -1 after an error or when the job's cancel is requested.
ssize_t ReceiveBytes(int socket, std::span<char> buffer);

}  // namespace zr7700

#endif  // ZR7700_STATUS_UNIX_SOCKET_H_
