// The head's way over the page: which pass prints which row, and in which order passes go out.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_SWEEP_H_
#define ZR7700_REFERENCE_ENGINE_SWEEP_H_

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "reference_engine/family.h"
#include "reference_engine/row_packing.h"
#include "reference_engine/stream_writer.h"

namespace zr7700::reference_engine {

enum class PrintDirection : uint8_t { kBoth = 0, kReverse = 1, kForward = 2 };

struct SweepSettings {
  Family family = Family::kGranite;
  uint32_t passes = 1;
  PrintDirection direction = PrintDirection::kBoth;
  // How far right of its order a reverse pass lays its drops, in dots.
  int reverse_lag_dots = 0;
};

// One pass over one line: `line` of the page in its meeting number `meeting` (0 .. passes - 1) with
// the head. The head prints the columns whose number modulo passes is PhaseOf.
struct Meeting {
  uint32_t line;
  uint32_t meeting;
};
constexpr uint32_t PhaseOf(Meeting meeting, uint32_t passes) {
  return (meeting.meeting + meeting.line) % passes;
}

// What has been sent of a page.
struct PageCounts {
  uint32_t passes = 0;
  uint32_t rows = 0;
  std::array<uint32_t, kPlanes> drops = {};
};

class Sweep {
 public:
  // Begins a page whose passes go to `writer`, which must outlive the sweep.
  Sweep(const SweepSettings& settings, StreamWriter* writer);

  // Sends the passes that are complete when the page has reached `line`. Call before the line's
  // rows; lines must rise.
  void ReachLine(uint32_t line);

  // Adds the drops of one row: levels[i] (0 to 3) belongs in column first_column + i x passes.
  void AddRow(Meeting meeting, Plane plane, uint32_t first_column, std::span<const uint8_t> levels);

  // Sends what is left.
  void Finish();

  const PageCounts& counts() const { return counts_; }

 private:
  struct Row {
    uint16_t nozzle;
    Plane plane;
    uint16_t cells;
    uint32_t first_column;
    uint32_t drops;
    size_t data_end;
  };
  // Rows in the order in which they are sent, with their escaped data end to end.
  struct RowList {
    std::vector<Row> rows;
    std::vector<uint8_t> data;
  };
  // Granite uses the first list only, for its planes take turns; Heron has one a plane.
  struct PendingPass {
    std::array<RowList, kPlanes> lists;
  };

  uint32_t PassOf(Meeting meeting) const;
  uint32_t FirstOpenPass(uint32_t line) const;
  int HeadLine(uint32_t pass) const;
  PendingPass& Pending(uint32_t pass) { return pending_[pass % pending_.size()]; }
  bool SendsReverse() const;
  void SendPassesBefore(uint32_t pass);
  void SendPass(uint32_t pass);
  void SendList(const RowList& list, bool reverse);

  SweepSettings settings_;
  StreamWriter* writer_;
  RowPacker packer_;
  uint32_t next_pass_ = 0;
  PageCounts counts_;
  // No more passes than this are open at once: Heron's two kinds of lines, eight passes each.
  std::array<PendingPass, 16> pending_;
};

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_SWEEP_H_
