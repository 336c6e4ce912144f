// zr7700-printer: the virtual printer as a program between pipes. The printer stream comes on
// standard input, status records leave by a descriptor that the caller names.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <limits>
#include <string>

#include "about/questions.h"
#include "virtual_printer/command.h"
#include "virtual_printer/log_line.h"
#include "virtual_printer/session.h"
#include "virtual_printer/standard_descriptors.h"
#include "virtual_printer/stop_signals.h"

namespace zr7700::printer {
namespace {

constexpr int kExitFaults = 1;  // a violation, a file that could not be written, or switched off
constexpr int kExitUsage = 2;

constexpr char kUsage[] =
    "Usage: zr7700-printer [OPTION VALUE]... < STREAM\n"
    "\n"
    "  --out FOLDER        where the pictures go (.)\n"
    "  --name NAME         what their names begin with (disc)\n"
    "  --report FILE       write a report there, as JSON\n"
    "  --status-fd NUMBER  send status records to this descriptor (none)\n"
    "  --rate NUMBER       status records a second (20)\n"
    "  --cartridge LETTER  Q, P, U, V, none or invalid (Q)\n"
    "  --discs NUMBER      discs in the bin (25)\n"
    "  --diameter MM       80 or 120 (as the page asks for)\n"
    "  --pace TIME         a disc takes at least this long, as in 2.5s (0)\n"
    "  --script FILE       obey a fault script\n"
    "  --control SOCKET    listen for orders there\n"
    "  --help              say this\n"
    "  --version           say the version\n"
    "\n"
    "Exit status: 0 when the stream was right and every file is written, 1 when not or when it is\n"
    "switched off (SIGTERM) before, 2 when the options or the places that they name are wrong.\n";

struct Options {
  Settings settings;
  int status_fd = -1;
};

bool SetOption(std::string_view name, std::string_view text, Options& options, std::string& error) {
  if (name != "status-fd") return SetByName(name, text, options.settings, error);
  error = "\"status-fd\" takes the number of an open descriptor.";
  const auto number = ParseNumber(text, std::numeric_limits<int>::max());
  // One that is not open would become a picture's.
  if (!number || fcntl(static_cast<int>(*number), F_GETFD) < 0) return false;
  options.status_fd = static_cast<int>(*number);
  return true;
}

// Options are "--name value" and "--name=value".
bool ReadOptions(int argc, char** argv, Options& options, std::string& error) {
  for (int i = 1; i < argc; ++i) {
    std::string_view name = argv[i];
    if (!name.starts_with("--")) {
      error = "There is no argument \"" + std::string(name) + "\".";
      return false;
    }
    name.remove_prefix(2);
    const size_t equals = name.find('=');
    const bool is_last = i + 1 == argc;
    std::string_view value = is_last ? "" : argv[i + 1];
    if (equals != name.npos) {
      value = name.substr(equals + 1);
      name = name.substr(0, equals);
    } else {
      ++i;
    }
    if (!SetOption(name, value, options, error)) return false;
  }
  return true;
}

// Writes what the pipe has room for: a reader that has gone to sleep must not stop the printer.
void SendToDescriptor(int number, std::span<const uint8_t> bytes) {
  constexpr size_t kAtOnce = 512;  // a pipe that is ready takes so many without blocking
  while (number >= 0 && !bytes.empty()) {
    pollfd room = {number, POLLOUT, 0};
    if (poll(&room, 1, 0) <= 0 || (room.revents & POLLOUT) == 0) return;
    const ssize_t count = write(number, bytes.data(), std::min(bytes.size(), kAtOnce));
    if (count <= 0) return;
    bytes = bytes.subspan(static_cast<size_t>(count));
  }
}

void Log(LogLevel level, const std::string& line) {
  if (level == LogLevel::kDebug) return;
  std::fprintf(stderr, "zr7700-printer: %s\n", LogLine(line).c_str());
}

int Main(int argc, char** argv) {
  HoldStandardDescriptors();
  const std::string_view question = FirstQuestion(argc, argv);
  if (!question.empty()) return AnswerQuestion(question, "zr7700-printer", kUsage);
  IgnoreWriteSignals();
  NoteStopSignals({SIGTERM, SIGINT, SIGHUP});
  Options options;
  options.settings.out = ".";
  std::string error;
  if (!ReadOptions(argc, argv, options, error)) {
    Log(LogLevel::kError, error + " See --help.");
    return kExitUsage;
  }
  const auto send = [&](std::span<const uint8_t> bytes) {
    SendToDescriptor(options.status_fd, bytes);
  };
  const auto stopped = [] { return stop_asked.load(); };
  Session session(options.settings, {.input = STDIN_FILENO,
                                     .copies = 1,
                                     .send_record = send,
                                     .log = Log,
                                     .cancelled = stopped,
                                     .stopped = stopped});
  if (!session.Open(error)) {
    Log(LogLevel::kError, error);
    return kExitUsage;
  }
  session.Run();
  return session.report().Clean() && !session.report().given_up ? 0 : kExitFaults;
}

}  // namespace
}  // namespace zr7700::printer

int main(int argc, char** argv) { return zr7700::printer::Main(argc, argv); }
