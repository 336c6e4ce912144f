// The printer's voice: when which bytes of which status record go out, and everything that a fault
// script may do to them.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_RECORD_CHANNEL_H_
#define ZR7700_VIRTUAL_PRINTER_RECORD_CHANNEL_H_

#include <cstdint>
#include <functional>
#include <random>
#include <span>
#include <vector>

#include "virtual_printer/command.h"
#include "virtual_printer/status_record.h"

namespace zr7700::printer {

// Times are seconds since the printer was switched on. Used by one thread.
class RecordChannel {
 public:
  // Takes bytes that are to leave the printer in one piece; valid during the call only.
  using Send = std::function<void(std::span<const uint8_t>)>;

  // Sends a record every `period_s` seconds (above 0) from time 0 on.
  RecordChannel(double period_s, Send send) : period_s_(period_s), send_(std::move(send)) {}

  // Carries an order to the back channel out from `now_s` on; false when it is not for it.
  bool Obey(const Command& command, double now_s);

  // Sends what is due at `now_s`. A sender that comes late leaves records out; it sends no burst.
  void Tick(double now_s, const PrinterStatus& status);

  // When Tick has something to do next.
  double NextTick() const;

  // Records begun so far, spoilt ones too.
  uint64_t records_sent() const { return records_sent_; }

 private:
  void SendRecord(double now_s, const PrinterStatus& status);
  void SendFaults(std::span<const uint8_t> record);
  void SendTail();

  const double period_s_;
  const Send send_;
  uint64_t records_sent_ = 0;
  double next_record_s_ = 0;
  double silent_until_s_ = 0;
  uint32_t split_bytes_ = 0;     // 0: records go out whole
  uint32_t misalign_bytes_ = 0;  // waits for the next record, as noise_bytes_ does
  uint32_t noise_bytes_ = 0;
  uint32_t bad_sums_ = 0;      // records still to spoil
  std::vector<uint8_t> tail_;  // the second piece of a split record
  double tail_s_ = 0;          // when it goes out
  std::mt19937 random_;        // always the same noise, so that a failure can be had again
};

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_RECORD_CHANNEL_H_
