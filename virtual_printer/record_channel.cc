// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/record_channel.h"

#include <algorithm>

namespace zr7700::printer {

bool RecordChannel::Obey(const Command& command, double now_s) {
  const uint32_t number = command.numbers[0];
  switch (command.verb) {
    case Verb::kSilence:
      silent_until_s_ = now_s + command.seconds;
      return true;
    case Verb::kSplit:
      split_bytes_ = number;
      return true;
    case Verb::kMisalign:
      misalign_bytes_ = number;
      return true;
    case Verb::kNoise:
      noise_bytes_ = number;
      return true;
    case Verb::kBadSum:
      bad_sums_ = number;
      return true;
    default:
      return false;
  }
}

double RecordChannel::NextTick() const {
  return tail_.empty() ? next_record_s_ : std::min(next_record_s_, tail_s_);
}

void RecordChannel::Tick(double now_s, const PrinterStatus& status) {
  if (!tail_.empty() && now_s >= tail_s_) SendTail();
  if (now_s < next_record_s_) return;
  SendTail();
  if (now_s >= silent_until_s_) SendRecord(now_s, status);
  next_record_s_ = std::max(next_record_s_ + period_s_, now_s);
}

void RecordChannel::SendRecord(double now_s, const PrinterStatus& status) {
  StatusRecord record = BuildStatusRecord(status);
  if (bad_sums_ > 0) {
    --bad_sums_;
    record[142] = static_cast<uint8_t>(record[142] + 1);
  }
  SendFaults(record);
  ++records_sent_;
  const std::span<const uint8_t> whole(record);
  const size_t first_bytes = split_bytes_ == 0 ? whole.size() : split_bytes_;
  send_(whole.first(first_bytes));
  const auto rest = whole.subspan(first_bytes);
  tail_.assign(rest.begin(), rest.end());
  tail_s_ = now_s + period_s_ / 2;
}

// What a listener hears who joins in the middle of a record, and line noise.
void RecordChannel::SendFaults(std::span<const uint8_t> record) {
  if (misalign_bytes_ > 0) send_(record.last(misalign_bytes_));
  misalign_bytes_ = 0;
  if (noise_bytes_ == 0) return;
  std::vector<uint8_t> noise(noise_bytes_);
  std::generate(noise.begin(), noise.end(), [this] { return static_cast<uint8_t>(random_()); });
  send_(noise);
  noise_bytes_ = 0;
}

void RecordChannel::SendTail() {
  if (tail_.empty()) return;
  send_(tail_);
  tail_.clear();
}

}  // namespace zr7700::printer
