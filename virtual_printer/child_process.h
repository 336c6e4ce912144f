// For tests: a program between pipes. Its standard input and a back channel (descriptor 3) are
// pipes of the test's; what it says on standard error is kept.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_CHILD_PROCESS_H_
#define ZR7700_VIRTUAL_PRINTER_CHILD_PROCESS_H_

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace zr7700::printer {

inline std::string TextOf(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

// What a child is started with besides its arguments.
struct ChildSetup {
  std::vector<std::string> environment = {};  // NAME=value, added to the test's
  bool back_channel = true;                   // false: descriptor 3 is closed
  bool small_disk = false;                    // no file may grow beyond 6,000 bytes
  std::vector<int> closed = {};               // standard descriptors that are closed
};

// Waits at most 20 seconds for anything; what hangs longer is killed and has status -1.
class ChildProcess {
 public:
  ChildProcess(const std::vector<std::string>& arguments, const std::string& folder,
               const ChildSetup& setup = {})
      : errors_path_(folder + "/stderr"), output_path_(folder + "/stdout") {
    signal(SIGPIPE, SIG_IGN);
    if (pipe2(input_, O_CLOEXEC) != 0 || pipe2(back_, O_CLOEXEC) != 0) return;
    process_ = fork();
    if (process_ == 0) Become(arguments, setup);
    close(input_[0]);
    close(back_[1]);
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess() {
    if (process_ > 0) Wait(0);
    CloseInput();
    close(back_[0]);
  }

  // Writes all of `bytes`; false when the child has closed its input or takes none for 20 seconds.
  bool Write(const std::vector<uint8_t>& bytes) {
    fcntl(input_[1], F_SETFL, O_NONBLOCK);
    for (size_t at = 0; at < bytes.size();) {
      pollfd room = {input_[1], POLLOUT, 0};
      if (poll(&room, 1, 20000) <= 0 || (room.revents & POLLERR) != 0) return false;
      const ssize_t count = write(input_[1], &bytes[at], bytes.size() - at);
      if (count < 0 && errno == EAGAIN) continue;
      if (count < 0) return false;
      at += static_cast<size_t>(count);
    }
    return true;
  }
  void CloseInput() {
    if (input_[1] >= 0) close(input_[1]);
    input_[1] = -1;
  }
  void Signal(int number) const { kill(process_, number); }

  // Reads `bytes` bytes from the back channel; fewer when none come for 20 seconds.
  std::vector<uint8_t> ReadBack(size_t bytes) {
    std::vector<uint8_t> heard(bytes);
    size_t at = 0;
    while (at < bytes) {
      pollfd data = {back_[0], POLLIN, 0};
      if (poll(&data, 1, 20000) <= 0) break;
      const ssize_t count = read(back_[0], &heard[at], bytes - at);
      if (count <= 0) break;
      at += static_cast<size_t>(count);
    }
    heard.resize(at);
    return heard;
  }

  // The exit status; -1 when the child had to be killed or died of a signal.
  int Wait(int seconds = 20) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    int status = 0;
    while (waitpid(process_, &status, WNOHANG) == 0) {
      if (std::chrono::steady_clock::now() > end) {
        kill(process_, SIGKILL);
        waitpid(process_, &status, 0);
        break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  bool Runs() const {
    siginfo_t facts{};
    waitid(P_PID, static_cast<id_t>(process_), &facts, WEXITED | WNOHANG | WNOWAIT);
    return facts.si_pid == 0;
  }

  std::string Errors() const { return TextOf(errors_path_); }
  std::string Output() const { return TextOf(output_path_); }

 private:
  [[noreturn]] void Become(const std::vector<std::string>& arguments, const ChildSetup& setup) {
    const int files = O_WRONLY | O_CREAT | O_TRUNC;
    dup2(open(errors_path_.c_str(), files, 0600), STDERR_FILENO);
    dup2(open(output_path_.c_str(), files, 0600), STDOUT_FILENO);
    dup2(input_[0], STDIN_FILENO);
    const int back = fcntl(back_[1], F_DUPFD, 10);
    for (int number = 3; number < 40; ++number) {
      if (number != back) close(number);
    }
    if (setup.back_channel) dup2(back, 3);
    close(back);
    signal(SIGPIPE, SIG_DFL);
    const rlimit small = {6000, 6000};
    if (setup.small_disk) setrlimit(RLIMIT_FSIZE, &small);
    for (const int number : setup.closed) close(number);
    for (const std::string& text : setup.environment) putenv(strdup(text.c_str()));
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(strdup(argument.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
  }

  const std::string errors_path_;
  const std::string output_path_;
  pid_t process_ = -1;
  int input_[2] = {-1, -1};
  int back_[2] = {-1, -1};
};

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_CHILD_PROCESS_H_
