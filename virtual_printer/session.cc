// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/session.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace zr7700::printer {
namespace {

constexpr size_t kReadBytes = 65536;
// While pictures are made, or the printer waits for its operator, looked at this often.
constexpr double kWatchPeriod_s = 0.01;

bool CheckFolder(const std::string& folder, const char* cannot, std::string& error) {
  struct stat facts {};
  const bool found = stat(folder.c_str(), &facts) == 0;
  if (found && !S_ISDIR(facts.st_mode)) errno = ENOTDIR;
  if (found && S_ISDIR(facts.st_mode) && access(folder.c_str(), W_OK | X_OK) == 0) return true;
  error = "The folder " + folder + cannot + std::strerror(errno) + ".";
  return false;
}

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == path.npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string Stem(const Settings& settings, size_t number) {
  char digits[24];
  std::snprintf(digits, sizeof digits, "-%03zu", number);
  return settings.out + "/" + settings.name + digits;
}

}  // namespace

Session::Session(const Settings& settings, SessionPorts ports)
    : settings_(settings),
      ports_(std::move(ports)),
      switched_on_(std::chrono::steady_clock::now()),
      channel_(1.0 / settings.rate_per_s,
               [this](std::span<const uint8_t> piece) { ports_.send_record(piece); }),
      decoder_(*this),
      copies_left_(ports_.copies) {
  machine_.cartridge = settings.cartridge;
  machine_.discs = settings.discs;
}

bool Session::Open(std::string& error) {
  if (!CheckFolder(settings_.out, " cannot take pictures: ", error)) return false;
  if (!settings_.report.empty() &&
      !CheckFolder(FolderOf(settings_.report), " cannot take a report: ", error)) {
    return false;
  }
  if (!settings_.script.empty()) {
    auto script = LoadScript(settings_.script, error);
    if (!script) return false;
    schedule_ = Schedule(std::move(*script));
  }
  return settings_.control.empty() || control_.Open(settings_.control, error);
}

void Session::Run() {
  while (!Done()) Turn();
  NoteStatus();
  report_.seconds = Now();
  report_.records_sent = channel_.records_sent();
  std::string error;
  if (!settings_.report.empty() && !WriteText(ReportJson(report_), settings_.report, error)) {
    Fail(error);
  }
}

double Session::Now() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - switched_on_).count();
}

bool Session::Done() const {
  return input_ended_ && stream_dry_ && !wants_disc_ && !machine_.printing;
}

void Session::Turn() {
  StopWhenAsked();
  ObeyDueOrders();
  TakeWaitingDisc();
  FinishReadyDisc();
  NoteStatus();
  channel_.Tick(Now(), StatusOf(machine_));
  StepStream();
  if (!Done()) Wait();
}

void Session::ObeyDueOrders() {
  for (const Command& command : schedule_.TakeDue(Now())) Obey(command);
}

void Session::Obey(const Command& command) {
  if (command.verb == Verb::kStatus) ports_.log(LogLevel::kInfo, StatusAnswer());
  if (!ObeyMachineCommand(command, machine_)) channel_.Obey(command, Now());
  NoteStatus();
}

std::string Session::Answer(std::string_view line) {
  std::string error;
  const auto scheduled = ParseScheduledCommand(line, error);
  if (!scheduled) return "error: " + error;
  const bool at_once = scheduled->trigger == Trigger::kAtOnce;
  if (at_once && scheduled->command.verb == Verb::kStatus) return StatusAnswer();
  // What has no time to wait for counts before the answer is given.
  schedule_.Add(*scheduled);
  ObeyDueOrders();
  return "ok";
}

std::string Session::StatusAnswer() const {
  std::string text = DescribeMachine(machine_) + ", ink";
  for (const uint32_t use : machine_.ink_use) text += " " + std::to_string(use);
  return text + ", page " + std::to_string(report_.pages) + (wants_disc_ ? " waits" : "") + ", " +
         std::to_string(report_.discs.size()) + " out, " + std::to_string(report_.violation_count) +
         " violations";
}

// A page that has begun waits here for a disc and a cartridge, and lets no more bytes in.
void Session::TakeWaitingDisc() {
  if (!wants_disc_) return;
  if (TakeDisc(machine_)) {
    wants_disc_ = false;
    disc_began_s_ = Now();
    // Signed: the printer may lay its drops further left as well.
    decoder_.SetReverseLag(static_cast<int8_t>(machine_.alignment_6));
  } else if (ports_.cancelled() && !CanPrint(machine_)) {
    ports_.log(LogLevel::kInfo, "The job is given up: the printer cannot print.");
    report_.given_up = true;
    wants_disc_ = false;
    discards_ = true;
  }
}

void Session::FinishReadyDisc() {
  if (Now() < disc_began_s_ + settings_.pace_s) return;
  auto disc = maker_.TakeReady();
  if (!disc) return;
  FinishDisc(machine_);
  if (!disc->error.empty()) Fail(disc->error);
  report_.discs.push_back(std::move(*disc));
  const DiscReport& last = report_.discs.back();
  ports_.log(LogLevel::kInfo, DescribeDisc(last, report_.discs.size()) +
                                  (last.picture.empty() ? "" : ", " + last.picture));
  schedule_.PageEnded(page_in_maker_, Now());
  ObeyDueOrders();
}

// Decodes until the bytes are used up or the printer is kept from going on.
void Session::StepStream() {
  while (!wants_disc_ && !maker_.Busy() && !discards_ && !stream_dry_) {
    stream_dry_ = !decoder_.Step();
  }
  if (discards_) stream_dry_ = true;
}

void Session::Wait() {
  std::vector<pollfd> waits;
  control_.AddWaits(waits);
  const bool takes_input = !input_ended_ && stream_dry_ && !wants_disc_ && !maker_.Busy();
  if (takes_input) waits.push_back({ports_.input, POLLIN, 0});
  const double next_s = std::min(channel_.NextTick(), schedule_.NextDue());
  double rest_s = std::max(0.0, next_s - Now());
  if (!takes_input) rest_s = std::min(rest_s, kWatchPeriod_s);
  poll(waits.data(), waits.size(), static_cast<int>(std::ceil(1000 * rest_s)));
  control_.Serve([this](std::string_view line) { return Answer(line); });
  if (takes_input && waits.back().revents != 0) ReadInput();
}

void Session::ReadInput() {
  uint8_t block[kReadBytes];
  const ssize_t count = read(ports_.input, block, sizeof block);
  if (count > 0) {
    report_.stream_bytes += static_cast<uint64_t>(count);
    if (!discards_) decoder_.Append(std::span(block).first(static_cast<size_t>(count)));
    stream_dry_ = false;
    return;
  }
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
  if (count < 0) Fail(std::string("The print data cannot be read: ") + std::strerror(errno) + ".");
  EndInput();
}

bool Session::BeginNextCopy() {
  if (--copies_left_ <= 0) return false;
  if (lseek(ports_.input, 0, SEEK_SET) == 0) return true;
  Fail(std::string("The print data cannot be read again for the next copy: ") +
       std::strerror(errno) + ".");
  return false;
}

void Session::EndInput() {
  if (BeginNextCopy()) return;
  input_ended_ = true;
  decoder_.Finish();
  stream_dry_ = false;
}

// What has been read is still printed, as the stream of a cable that was pulled out.
void Session::StopWhenAsked() {
  if (input_ended_ || !ports_.stopped()) return;
  report_.given_up = true;
  copies_left_ = 0;
  EndInput();
}

void Session::OnHeader(uint64_t /*offset*/, const PrintHeader& header) {
  ++report_.headers;
  if (header.right) machine_.ink_warning = header.ink_warning;
}

// Orders for the page come first, so that a script can make the page itself wait.
void Session::OnPageStart(uint64_t /*offset*/, const PageStart& /*page*/) {
  ++report_.pages;
  schedule_.PageBegan(report_.pages, Now());
  ObeyDueOrders();
  wants_disc_ = true;
  TakeWaitingDisc();
  if (wants_disc_ && !CanPrint(machine_)) {
    ports_.log(LogLevel::kInfo, "Waiting: " + DescribeMachine(machine_));
  }
}

void Session::OnPagePrinted(PrintedPage&& page) {
  for (size_t ink = 0; ink < kInks; ++ink) {
    UseInk(machine_, ink, Picolitres(page.canvas.drops[ink]));
  }
  page_in_maker_ = report_.pages;
  maker_.Begin(std::move(page), Stem(settings_, report_.discs.size() + 1),
               static_cast<int>(settings_.diameter_mm));
}

void Session::OnViolation(uint64_t offset, const std::string& sentence) {
  ++report_.violation_count;
  if (report_.violations.size() >= Report::kMostKept) return;
  report_.violations.push_back({offset, sentence});
  ports_.log(LogLevel::kError, "Byte " + std::to_string(offset) + ": " + sentence);
}

void Session::NoteStatus() {
  std::string text = DescribeMachine(machine_);
  if (!report_.status.empty() && report_.status.back().text == text) return;
  if (report_.status.size() >= Report::kMostKept) return;
  ports_.log(LogLevel::kDebug, "Status: " + text);
  report_.status.push_back({Now(), std::move(text)});
}

void Session::Fail(const std::string& sentence) {
  ports_.log(LogLevel::kError, sentence);
  if (report_.errors.size() < Report::kMostKept) report_.errors.push_back(sentence);
}

}  // namespace zr7700::printer
