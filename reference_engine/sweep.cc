// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/sweep.h"

namespace zr7700::reference_engine {
namespace {

// Both heads span the same number of lines.
constexpr uint32_t kSwathLines = 192;
static_assert(HeadOf(Family::kGranite).nozzles * HeadOf(Family::kGranite).pitch_lines ==
              kSwathLines);
static_assert(HeadOf(Family::kHeron).nozzles * HeadOf(Family::kHeron).pitch_lines == kSwathLines);

constexpr char kPlaneNames[kPlanes] = {'C', 'M', 'Y'};

// Heron's order of planes; Granite takes them as they come, line by line.
constexpr size_t HeronList(Plane plane) { return static_cast<size_t>(kYellow - plane); }

}  // namespace

Sweep::Sweep(const SweepSettings& settings, StreamWriter* writer)
    : settings_(settings), writer_(writer), packer_(settings.family) {}

uint32_t Sweep::PassOf(Meeting meeting) const {
  // Granite: the head moves on by a swath's P-th part, so pass b is the first to meet band b.
  if (settings_.family == Family::kGranite)
    return meeting.line / (kSwathLines / settings_.passes) + meeting.meeting;
  // Heron: all passes of a swath's even lines, then all of its odd lines.
  const uint32_t swath = meeting.line / kSwathLines;
  return (swath * 2 + meeting.line % 2) * settings_.passes + meeting.meeting;
}

uint32_t Sweep::FirstOpenPass(uint32_t line) const {
  if (settings_.family == Family::kGranite) return PassOf({line, 0});
  return line / kSwathLines * 2 * settings_.passes;
}

int Sweep::HeadLine(uint32_t pass) const {
  const int number = static_cast<int>(pass);
  const int passes = static_cast<int>(settings_.passes);
  const int swath = static_cast<int>(kSwathLines);
  if (settings_.family == Family::kGranite) return (number - passes + 1) * (swath / passes);
  return number / passes / 2 * swath + number / passes % 2;
}

void Sweep::ReachLine(uint32_t line) { SendPassesBefore(FirstOpenPass(line)); }

void Sweep::AddRow(Meeting meeting, Plane plane, uint32_t first_column,
                   std::span<const uint8_t> levels) {
  const Drops drops = FindDrops(levels);
  if (drops.count == 0) return;
  const uint32_t pass = PassOf(meeting);
  const bool heron = settings_.family == Family::kHeron;
  RowList& list = Pending(pass).lists[heron ? HeronList(plane) : 0];
  packer_.Append(drops.levels, &list.data);
  const int below_head = static_cast<int>(meeting.line) - HeadLine(pass);
  const int nozzle = below_head / HeadOf(settings_.family).pitch_lines;
  const auto skipped = static_cast<uint32_t>(drops.first_cell) * settings_.passes;
  list.rows.push_back({static_cast<uint16_t>(nozzle), plane,
                       static_cast<uint16_t>(drops.levels.size()), first_column + skipped,
                       drops.count, list.data.size()});
}

void Sweep::Finish() {
  // Every open pass lies among the next ones; there are no more of them than pending_ has room for.
  SendPassesBefore(next_pass_ + static_cast<uint32_t>(pending_.size()));
  writer_->Flush();
}

bool Sweep::SendsReverse() const {
  if (settings_.direction == PrintDirection::kBoth) return counts_.passes % 2 == 1;
  return settings_.direction == PrintDirection::kReverse;
}

void Sweep::SendPassesBefore(uint32_t pass) {
  // Beyond the open passes all are empty.
  for (size_t i = 0; i < pending_.size() && next_pass_ < pass; ++i) SendPass(next_pass_++);
  if (next_pass_ < pass) next_pass_ = pass;
}

void Sweep::SendPass(uint32_t pass) {
  PendingPass& pending = Pending(pass);
  bool empty = true;
  for (const RowList& list : pending.lists) empty = empty && list.rows.empty();
  if (empty) return;
  const bool reverse = SendsReverse();
  Payload start;
  start.U32(counts_.passes).U32(static_cast<uint32_t>(HeadLine(pass)));
  start.U8(reverse ? 1 : 0).U8(settings_.passes);
  writer_->Send(Command::kPassStart, start);
  ++counts_.passes;
  for (RowList& list : pending.lists) {
    SendList(list, reverse);
    list.rows.clear();
    list.data.clear();
  }
}

void Sweep::SendList(const RowList& list, bool reverse) {
  size_t data_begin = 0;
  for (const Row& row : list.rows) {
    const int lag = reverse ? settings_.reverse_lag_dots : 0;
    const int told_column = static_cast<int>(row.first_column) - lag;
    Payload fixed_part;
    fixed_part.U16(row.nozzle).U8(static_cast<uint8_t>(kPlaneNames[row.plane]));
    fixed_part.U16(static_cast<uint32_t>(told_column)).U16(row.cells);
    // Counted before it is sent: whatever the callback throws, the row has gone.
    counts_.drops[row.plane] += row.drops;
    ++counts_.rows;
    writer_->SendRow(fixed_part,
                     std::span(list.data).subspan(data_begin, row.data_end - data_begin));
    data_begin = row.data_end;
  }
}

}  // namespace zr7700::reference_engine
