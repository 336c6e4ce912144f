// The control socket: a Unix-domain stream socket that takes orders, a line each, and answers each
// with a line.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_CONTROL_SOCKET_H_
#define ZR7700_VIRTUAL_PRINTER_CONTROL_SOCKET_H_

#include <poll.h>
#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zr7700::printer {

// A file descriptor that is closed with its owner.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept;
  ~Descriptor();

  int number() const { return number_; }
  int Release();

 private:
  int number_;
};

// Used by one thread. Never blocks.
class ControlSocket {
 public:
  // The answer to one line, itself without a line break.
  using Answer = std::function<std::string(std::string_view line)>;

  ControlSocket() = default;
  ControlSocket(const ControlSocket&) = delete;
  ControlSocket& operator=(const ControlSocket&) = delete;
  // Removes the socket's file again, if it is still this one's.
  ~ControlSocket();

  // Listens at `path`, which a socket left over from an earlier run may hold, but none that
  // somebody listens on. False, with one sentence in `error`, when it cannot; the object stays
  // without work then.
  bool Open(const std::string& path, std::string& error);

  // Adds what to wait for (reading) to `waits`.
  void AddWaits(std::vector<pollfd>& waits) const;

  // Takes new callers in, reads what callers say and answers every whole line. A caller who hangs
  // up, says more than 1,000 bytes without a line break or does not take its answers is dropped.
  void Serve(const Answer& answer);

 private:
  struct Caller {
    Descriptor socket;
    std::string heard;
    bool gone = false;
  };

  void TakeCallersIn();
  static void Hear(Caller& caller);
  static void AnswerLines(Caller& caller, const Answer& answer);

  std::string path_;
  dev_t device_ = 0;  // with inode_, the file that is ours
  ino_t inode_ = 0;
  Descriptor listener_;
  std::vector<Caller> callers_;
};

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_CONTROL_SOCKET_H_
