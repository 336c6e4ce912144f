// One run of the virtual printer: bytes in, discs and status records out, orders obeyed meanwhile.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_SESSION_H_
#define ZR7700_VIRTUAL_PRINTER_SESSION_H_

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "virtual_printer/control_socket.h"
#include "virtual_printer/disc_maker.h"
#include "virtual_printer/machine.h"
#include "virtual_printer/record_channel.h"
#include "virtual_printer/report.h"
#include "virtual_printer/schedule.h"
#include "virtual_printer/settings.h"
#include "virtual_printer/stream_decoder.h"

namespace zr7700::printer {

enum class LogLevel { kDebug, kInfo, kError };

// What a session has from the one who runs it. All of it must outlive the session.
struct SessionPorts {
  int input = 0;   // descriptor of the printer stream; not closed
  int copies = 1;  // how often the stream is printed; more than once needs an input that can seek
  RecordChannel::Send send_record;  // takes the bytes of the back channel; must not block
  std::function<void(LogLevel, const std::string& line)> log;
  std::function<bool()> cancelled;  // the job was cancelled: do not wait for discs any more
  std::function<bool()> stopped;    // switched off: read no more, finish what lies in the printer
};

// Used by one thread.
class Session : private StreamListener {
 public:
  Session(const Settings& settings, SessionPorts ports);

  // Reads the fault script, makes the control socket and looks at the folder for the pictures.
  // False, with one sentence in `error`, when one of them will not do.
  bool Open(std::string& error);

  // Prints until the input is at its end and the last disc is out, then writes the report that the
  // settings ask for.
  void Run();

  const Report& report() const { return report_; }

 private:
  void OnHeader(uint64_t offset, const PrintHeader& header) override;
  void OnPageStart(uint64_t offset, const PageStart& page) override;
  void OnPagePrinted(PrintedPage&& page) override;
  void OnViolation(uint64_t offset, const std::string& sentence) override;

  double Now() const;
  bool Done() const;
  void Turn();
  void ObeyDueOrders();
  void Obey(const Command& command);
  std::string Answer(std::string_view line);
  std::string StatusAnswer() const;
  void TakeWaitingDisc();
  void FinishReadyDisc();
  void StepStream();
  void Wait();
  void ReadInput();
  bool BeginNextCopy();
  void EndInput();
  void StopWhenAsked();
  void NoteStatus();
  void Fail(const std::string& sentence);

  const Settings settings_;
  const SessionPorts ports_;
  const std::chrono::steady_clock::time_point switched_on_;
  Machine machine_;
  Schedule schedule_;
  ControlSocket control_;
  RecordChannel channel_;
  StreamDecoder decoder_;
  DiscMaker maker_;
  Report report_;
  int copies_left_;
  bool input_ended_ = false;
  bool stream_dry_ = true;      // the decoder has no whole item left
  bool wants_disc_ = false;     // a page has begun and cannot be printed yet
  uint32_t page_in_maker_ = 0;  // the number of the page whose pictures are made
  bool discards_ = false;       // the job was given up: what still comes is thrown away
  double disc_began_s_ = 0;
};

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_SESSION_H_
