// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/control_socket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

namespace zr7700::printer {
namespace {

constexpr size_t kMostCallers = 8;
constexpr size_t kLongestLine = 1000;

struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  bool is_socket = false;
};

FileIdentity IdentityOf(const std::string& path) {
  struct stat facts {};
  if (lstat(path.c_str(), &facts) != 0) return {};
  return {facts.st_dev, facts.st_ino, S_ISSOCK(facts.st_mode)};
}

std::optional<sockaddr_un> AddressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return std::nullopt;
  }
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

// Removes the socket that a run which was killed left behind, and nothing but a socket on which
// nobody listens.
void RemoveOldSocket(const std::string& path, const sockaddr_un& address) {
  if (!IdentityOf(path).is_socket) return;
  const Descriptor caller(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const bool refused =
      connect(caller.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
      errno == ECONNREFUSED;
  if (refused) unlink(path.c_str());
}

bool Listen(int socket, const std::string& path) {
  const auto address = AddressOf(path);
  if (!address) return false;
  RemoveOldSocket(path, *address);
  return bind(socket, reinterpret_cast<const sockaddr*>(&*address), sizeof *address) == 0 &&
         listen(socket, static_cast<int>(kMostCallers)) == 0;
}

}  // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(number_, other.number_);
  return *this;
}

Descriptor::~Descriptor() {
  if (number_ >= 0) close(number_);
}

int Descriptor::Release() { return std::exchange(number_, -1); }

ControlSocket::~ControlSocket() {
  if (path_.empty()) return;
  const FileIdentity now = IdentityOf(path_);
  if (now.device == device_ && now.inode == inode_) unlink(path_.c_str());
}

bool ControlSocket::Open(const std::string& path, std::string& error) {
  Descriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (listener.number() < 0 || !Listen(listener.number(), path)) {
    error = "The control socket " + path + " cannot be made: " + std::strerror(errno) + ".";
    return false;
  }
  listener_ = std::move(listener);
  path_ = path;
  const FileIdentity made = IdentityOf(path);
  device_ = made.device;
  inode_ = made.inode;
  return true;
}

void ControlSocket::AddWaits(std::vector<pollfd>& waits) const {
  if (listener_.number() < 0) return;
  waits.push_back({listener_.number(), POLLIN, 0});
  for (const Caller& caller : callers_) waits.push_back({caller.socket.number(), POLLIN, 0});
}

void ControlSocket::Serve(const Answer& answer) {
  TakeCallersIn();
  for (Caller& caller : callers_) {
    Hear(caller);
    AnswerLines(caller, answer);
  }
  std::erase_if(callers_, [](const Caller& caller) { return caller.gone; });
}

void ControlSocket::TakeCallersIn() {
  while (listener_.number() >= 0) {
    Descriptor socket(accept4(listener_.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (socket.number() < 0) return;
    // One too many is hung up on.
    if (callers_.size() < kMostCallers) callers_.push_back({std::move(socket), {}, false});
  }
}

void ControlSocket::Hear(Caller& caller) {
  char block[kLongestLine];
  const ssize_t count = recv(caller.socket.number(), block, sizeof block, 0);
  if (count > 0) {
    caller.heard.append(block, static_cast<size_t>(count));
  } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
    caller.gone = true;
  }
}

// Whole lines are answered even when the caller has closed its side of the line already.
void ControlSocket::AnswerLines(Caller& caller, const Answer& answer) {
  for (size_t end; (end = caller.heard.find('\n')) != std::string::npos;) {
    const std::string reply = answer(std::string_view(caller.heard).substr(0, end)) + "\n";
    caller.heard.erase(0, end + 1);
    const ssize_t sent = send(caller.socket.number(), reply.data(), reply.size(), MSG_NOSIGNAL);
    if (sent != static_cast<ssize_t>(reply.size())) caller.gone = true;
  }
  if (caller.heard.size() > kLongestLine) caller.gone = true;
}

}  // namespace zr7700::printer
