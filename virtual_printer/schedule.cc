// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/schedule.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <memory>

#include "base/regular_file.h"
#include "virtual_printer/words.h"

namespace zr7700::printer {
namespace {

constexpr size_t kLongestScript = 1 << 20;
constexpr uint32_t kHighestPage = 1000000;

// Takes "at TIME" off the front of `words`; false when the time is none.
bool TakeTime(std::vector<std::string_view>& words, ScheduledCommand& scheduled) {
  const auto seconds = words.size() > 1 ? ParseSeconds(words[1]) : std::nullopt;
  if (!seconds) return false;
  scheduled.trigger = Trigger::kTime;
  scheduled.delay_s = *seconds;
  words.erase(words.begin(), words.begin() + 2);
  return true;
}

// Takes "on page N" or "after page N" and a time, if one follows, off the front of `words`.
bool TakePage(std::vector<std::string_view>& words, ScheduledCommand& scheduled) {
  if (words.size() < 3 || words[1] != "page") return false;
  const auto page = ParseNumber(words[2], kHighestPage);
  if (!page || *page == 0) return false;
  scheduled.trigger = words[0] == "on" ? Trigger::kOnPage : Trigger::kAfterPage;
  scheduled.page = *page;
  const auto delay = words.size() > 3 ? ParseSeconds(words[3]) : std::nullopt;
  scheduled.delay_s = delay.value_or(0);
  words.erase(words.begin(), words.begin() + (delay ? 4 : 3));
  return true;
}

bool TakeTrigger(std::vector<std::string_view>& words, ScheduledCommand& scheduled,
                 std::string& error) {
  if (words.empty()) return true;
  if (words[0] == "at") {
    error = "\"at\" takes a time such as 2.5s.";
    return TakeTime(words, scheduled);
  }
  if (words[0] != "on" && words[0] != "after") return true;
  error = "\"" + std::string(words[0]) + "\" takes \"page\" and a page number from 1.";
  return TakePage(words, scheduled);
}

std::string Join(const std::vector<std::string_view>& words) {
  std::string text;
  for (const std::string_view word : words) text.append(word).push_back(' ');
  return text;
}

// The text of the script at `path`; nothing, with one sentence in `error`, when it cannot be read.
std::optional<std::string> ReadScript(const std::string& path, std::string& error) {
  std::string text;
  const FileReading reading = ReadRegularFile(path.c_str(), Links::kFollowed, kLongestScript, text);
  if (reading == FileReading::kRead) return text;
  if (reading == FileReading::kTooLong) errno = EFBIG;
  error = "The file " + path + " cannot be read: " + std::strerror(errno) + ".";
  return std::nullopt;
}

}  // namespace

std::optional<ScheduledCommand> ParseScheduledCommand(std::string_view line, std::string& error) {
  std::vector<std::string_view> words = SplitWords(line);
  ScheduledCommand scheduled;
  if (!TakeTrigger(words, scheduled, error)) return std::nullopt;
  const auto command = ParseCommand(Join(words), error);
  if (!command) return std::nullopt;
  scheduled.command = *command;
  return scheduled;
}

std::optional<std::vector<ScheduledCommand>> ParseScript(std::string_view text,
                                                         std::string& error) {
  std::vector<ScheduledCommand> script;
  for (size_t number = 1; !text.empty(); ++number) {
    const size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    line = line.substr(0, line.find('#'));
    if (SplitWords(line).empty()) continue;
    const auto scheduled = ParseScheduledCommand(line, error);
    if (!scheduled) {
      error = "Line " + std::to_string(number) + ": " + error;
      return std::nullopt;
    }
    script.push_back(*scheduled);
  }
  return script;
}

std::optional<std::vector<ScheduledCommand>> LoadScript(const std::string& path,
                                                        std::string& error) {
  const auto text = ReadScript(path, error);
  if (!text) return std::nullopt;
  auto script = ParseScript(*text, error);
  if (!script) error = "The fault script " + path + " is wrong. " + error;
  return script;
}

void Schedule::Start(Trigger trigger, uint32_t page, double now_s) {
  for (ScheduledCommand& scheduled : waiting_) {
    if (scheduled.trigger != trigger || scheduled.page != page) continue;
    scheduled.trigger = Trigger::kTime;
    scheduled.delay_s += now_s;
  }
}

std::vector<Command> Schedule::TakeDue(double now_s) {
  std::vector<ScheduledCommand> due;
  std::erase_if(waiting_, [&](const ScheduledCommand& scheduled) {
    const bool is_due = scheduled.trigger == Trigger::kAtOnce ||
                        (scheduled.trigger == Trigger::kTime && scheduled.delay_s <= now_s);
    if (is_due) due.push_back(scheduled);
    return is_due;
  });
  std::stable_sort(due.begin(), due.end(),
                   [](const auto& a, const auto& b) { return a.delay_s < b.delay_s; });
  std::vector<Command> commands;
  commands.reserve(due.size());
  for (const ScheduledCommand& scheduled : due) commands.push_back(scheduled.command);
  return commands;
}

double Schedule::NextDue() const {
  double next_s = std::numeric_limits<double>::infinity();
  for (const ScheduledCommand& scheduled : waiting_) {
    if (scheduled.trigger == Trigger::kTime) next_s = std::min(next_s, scheduled.delay_s);
  }
  return next_s;
}

}  // namespace zr7700::printer
