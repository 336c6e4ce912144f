// zr7700virtual: the virtual printer as a CUPS backend.
#include <cups/backend.h>
#include <cups/cups.h>
#include <cups/sidechannel.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "virtual_printer/command.h"
#include "virtual_printer/control_socket.h"
#include "virtual_printer/device_uri.h"
#include "virtual_printer/log_line.h"
#include "virtual_printer/session.h"

namespace zr7700::printer {
namespace {

constexpr int kBackChannel = 3;  // the descriptor that CUPS gives every backend

// Written by the signal handler.
std::atomic<bool> job_cancelled = false;
static_assert(std::atomic<bool>::is_always_lock_free);

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

// A driver that is cancelled still finishes its page, so the backend reads on until the input ends.
// The handler's note only keeps a printer without discs from waiting for ever.
void IgnoreTermination() {
  struct sigaction action {};
  action.sa_handler = [](int) { job_cancelled = true; };
  action.sa_flags = SA_RESTART;
  sigaction(SIGTERM, &action, nullptr);
}

std::string DeviceUri(char** argv) {
  const char* uri = std::getenv("DEVICE_URI");
  return uri != nullptr ? uri : argv[0];
}

// The job's number stands in every file's name, and nothing else that came with the job.
std::string JobName(const char* job_id) {
  return "job-" + std::to_string(ParseNumber(job_id, 2000000000).value_or(0));
}

int Print(const Settings& settings, int input, int copies, const RecordChannel::Send& send) {
  std::string error;
  Session session(
      settings,
      {.input = input, .copies = copies, .send_record = send, .log = Log, .cancelled = [] {
         return job_cancelled.load();
       }});
  if (!session.Open(error)) return Stop(error);
  std::fputs("STATE: -connecting-to-device\n", stderr);
  Log(LogLevel::kInfo, "Printing on the virtual printer.");
  session.Run();
  const Report& report = session.report();
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

// A file is printed as often as the job has copies; a pipe's data hold all of them.
int PrintJob(int argc, char** argv, const Settings& settings) {
  // Found out before any file is opened, which might get the descriptor of a channel that is not.
  const RecordChannel::Send send = BackChannel();
  if (argc == 6) {
    IgnoreTermination();
    return Print(settings, STDIN_FILENO, 1, send);
  }
  Descriptor file(open(argv[6], O_RDONLY | O_CLOEXEC));
  if (file.number() < 0) return Stop("The print file " + std::string(argv[6]) + " cannot be read.");
  const uint32_t copies = ParseNumber(argv[4], 9999).value_or(1);
  return Print(settings, file.number(), std::max(1, static_cast<int>(copies)), send);
}

int Main(int argc, char** argv) {
  setvbuf(stderr, nullptr, _IOLBF, 0);
  signal(SIGPIPE, SIG_IGN);
  if (argc == 1) return ListDevices();
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
