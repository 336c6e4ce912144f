// The fault script: orders that wait for their time or for their page.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_SCHEDULE_H_
#define ZR7700_VIRTUAL_PRINTER_SCHEDULE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_printer/command.h"

namespace zr7700::printer {

// What an order waits for.
enum class Trigger {
  kAtOnce,     // nothing
  kTime,       // `delay_s` seconds after the printer was switched on
  kOnPage,     // the print header of page `page`, and `delay_s` seconds more
  kAfterPage,  // the end of page `page`, and `delay_s` seconds more
};

struct ScheduledCommand {
  Trigger trigger = Trigger::kAtOnce;
  uint32_t page = 0;  // 1 is the job's first
  double delay_s = 0;
  Command command;
};

// One line: "[at TIME | on page N [TIME] | after page N [TIME]] COMMAND". Nothing, with one
// sentence in `error`, when the line is none. Any thread.
std::optional<ScheduledCommand> ParseScheduledCommand(std::string_view line, std::string& error);

// A whole script: a line an order, "#" begins a comment. Nothing, with one sentence that names the
// line in `error`, at the first bad line. Any thread.
std::optional<std::vector<ScheduledCommand>> ParseScript(std::string_view text, std::string& error);

// The script in the file at `path`, at most 1 MiB long. Nothing, with one sentence in `error`, when
// the file cannot be read or is no script. Any thread.
std::optional<std::vector<ScheduledCommand>> LoadScript(const std::string& path,
                                                        std::string& error);

// The orders that have not been given yet. Times are seconds since the printer was switched on.
// Used by one thread.
class Schedule {
 public:
  Schedule() = default;
  explicit Schedule(std::vector<ScheduledCommand> commands) : waiting_(std::move(commands)) {}

  void Add(const ScheduledCommand& command) { waiting_.push_back(command); }

  // Tells of the events that orders wait for.
  void PageBegan(uint32_t page, double now_s) { Start(Trigger::kOnPage, page, now_s); }
  void PageEnded(uint32_t page, double now_s) { Start(Trigger::kAfterPage, page, now_s); }

  // Gives out the orders that are due at `now_s`, the earliest due first, those due together in the
  // order in which they were written. Each is given once.
  std::vector<Command> TakeDue(double now_s);

  // When the next order with a time is due; infinity when there is none.
  double NextDue() const;

 private:
  void Start(Trigger trigger, uint32_t page, double now_s);

  // An order whose page has come waits for a time from then on.
  std::vector<ScheduledCommand> waiting_;
};

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_SCHEDULE_H_
