// zr7700virtual: the virtual printer as a CUPS backend.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cups/backend.h>
#include <cups/cups.h>
#include <cups/sidechannel.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "about/questions.h"
#include "virtual_printer/command.h"
#include "virtual_printer/control_socket.h"
#include "virtual_printer/device_uri.h"
#include "virtual_printer/log_line.h"
#include "virtual_printer/session.h"
#include "virtual_printer/standard_descriptors.h"
#include "virtual_printer/stop_signals.h"

namespace zr7700::printer {
namespace {

constexpr int kBackChannel = 3;  // the descriptor that CUPS gives every backend
constexpr uint32_t kMostCopies = 9999;

constexpr char kUsage[] =
    "Usage: zr7700virtual\n"
    "       zr7700virtual job-id user title copies options [file]\n"
    "\n"
    "The virtual ZR7700 disc printer as a CUPS backend. Without arguments it names the device; "
    "CUPS\n"
    "starts it with a job's. The environment variable DEVICE_URI holds the printer's address.\n"
    "\n"
    "  --help     say this\n"
    "  --version  say the version\n"
    "\n"
    "The manual page zr7700virtual(8) has more.\n";

// The scheduler acts on each line by the word that it begins with.
void Log(LogLevel level, const std::string& line) {
  constexpr const char* kWords[] = {"DEBUG", "INFO", "ERROR"};
  std::fprintf(stderr, "%s: %s\n", kWords[static_cast<size_t>(level)], LogLine(line).c_str());
}

int Stop(const std::string& error) {
  Log(LogLevel::kError, error);
  return CUPS_BACKEND_STOP;
}

int ListDevices() {
  std::puts(
      "direct zr7700virtual \"Tessary ZR7700\" \"Virtual ZR7700 disc printer\" "
      "\"MFG:Tessary;MDL:ZR7700;CLS:PRINTER;\" \"\"");
  return CUPS_BACKEND_OK;
}

// Records for which the back channel has no room are lost, as they would be on a cable.
void SendToBackChannel(std::span<const uint8_t> bytes) {
  constexpr size_t kAtOnce = 512;  // a pipe that is ready takes so many without blocking
  while (!bytes.empty()) {
    const size_t count = std::min(bytes.size(), kAtOnce);
    const auto* text = reinterpret_cast<const char*>(bytes.data());
    if (cupsBackChannelWrite(text, count, 0.0) != static_cast<ssize_t>(count)) return;
    bytes = bytes.subspan(count);
  }
}

// Run by hand there is no back channel, and libcups would try for ever to write to it.
RecordChannel::Send BackChannel() {
  if (fcntl(kBackChannel, F_GETFD) < 0) return [](std::span<const uint8_t>) {};
  return SendToBackChannel;
}

std::string DeviceUri(char** argv) {
  const char* uri = std::getenv("DEVICE_URI");
  return uri != nullptr ? uri : argv[0];
}

// The job's number stands in every file's name, and nothing else that came with the job.
std::string JobName(const char* job_id) {
  return "job-" + std::to_string(ParseNumber(job_id, 2000000000).value_or(0));
}

int Print(const Settings& settings, const SessionPorts& ports) {
  std::string error;
  Session session(settings, ports);
  if (!session.Open(error)) return Stop(error);
  std::fputs("STATE: -connecting-to-device\n", stderr);
  Log(LogLevel::kInfo, "Printing on the virtual printer.");
  session.Run();
  const Report& report = session.report();
  if (report.given_up) {
    Log(LogLevel::kInfo, "Cancelled.");
    return CUPS_BACKEND_OK;
  }
  if (report.Clean()) {
    Log(LogLevel::kInfo, "Ready: " + std::to_string(report.discs.size()) + " discs.");
    return CUPS_BACKEND_OK;
  }
  if (report.violation_count > 0) {
    Log(LogLevel::kError, "The print data violate their format in " +
                              std::to_string(report.violation_count) + " places.");
  }
  return CUPS_BACKEND_FAILED;
}

// A driver that is cancelled still finishes its page, so a pipe is read until it ends; only a
// printer that waits for its operator gives the job up. A file is printed as often as the job has
// copies, and a cancel ends it where it is; a pipe's data hold all copies.
int PrintJob(int argc, char** argv, const Settings& settings) {
  // The back channel is looked at before any file is opened that might get its number.
  SessionPorts ports = {.input = STDIN_FILENO,
                        .copies = 1,
                        .send_record = BackChannel(),
                        .log = Log,
                        .cancelled = [] { return stop_asked.load(); },
                        .stopped = [] { return false; }};
  NoteStopSignals({SIGTERM});
  if (argc == 6) return Print(settings, ports);
  const Descriptor file(open(argv[6], O_RDONLY | O_CLOEXEC));
  if (file.number() < 0) {
    Log(LogLevel::kError, "The print file " + std::string(argv[6]) + " cannot be read.");
    return CUPS_BACKEND_FAILED;
  }
  ports.input = file.number();
  const uint32_t copies = ParseNumber(argv[4], UINT32_MAX).value_or(1);
  ports.copies = static_cast<int>(std::clamp(copies, 1U, kMostCopies));
  ports.stopped = ports.cancelled;
  return Print(settings, ports);
}

int Main(int argc, char** argv) {
  HoldStandardDescriptors();
  setvbuf(stderr, nullptr, _IOLBF, 0);
  IgnoreWriteSignals();
  if (argc == 1) return ListDevices();
  if (argc == 2 && IsQuestion(argv[1])) return AnswerQuestion(argv[1], "zr7700virtual", kUsage);
  if (argc != 6 && argc != 7) {
    std::fprintf(stderr, "Usage: %s job-id user title copies options [file]\n",
                 LogLine(argv[0]).c_str());
    return CUPS_BACKEND_STOP;
  }
  std::string error;
  auto settings = ParseDeviceUri(DeviceUri(argv), error);
  if (!settings) return Stop(error);
  const std::string job = JobName(argv[1]);
  settings->name = job + "-" + settings->name;
  if (settings->report.empty()) settings->report = settings->out + "/" + job + "-report.json";
  return PrintJob(argc, argv, *settings);
}

}  // namespace
}  // namespace zr7700::printer

int main(int argc, char** argv) { return zr7700::printer::Main(argc, argv); }
