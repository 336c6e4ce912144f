// What a virtual printer tells of its work: the report file.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_REPORT_H_
#define ZR7700_VIRTUAL_PRINTER_REPORT_H_

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "virtual_printer/disc_picture.h"
#include "virtual_printer/page_canvas.h"

namespace zr7700::printer {

// One disc that came out.
struct DiscReport {
  std::string picture;  // paths; empty when there is no picture
  std::string small_picture;
  std::string error;  // one sentence when a picture could not be written
  bool spoilt = false;
  Family family{};
  PageStart start;
  int32_t feed = 0;
  DiscPlace place;
  std::array<DropCounts, kInks> drops{};
  DotsOnDisc dots;
};

struct Violation {
  uint64_t offset = 0;  // bytes from the beginning of the stream
  std::string sentence;
};

struct StatusLine {
  double time_s = 0;  // since the printer was switched on
  std::string text;
};

struct Report {
  uint32_t headers = 0;
  uint32_t pages = 0;  // begun
  uint64_t stream_bytes = 0;
  uint64_t records_sent = 0;
  bool given_up = false;  // cancelled while the printer waited for a disc or a cartridge
  double seconds = 0;
  uint64_t violation_count = 0;
  std::vector<Violation> violations;  // the first kMostKept of them
  std::vector<DiscReport> discs;
  std::vector<StatusLine> status;   // what changed when; the first kMostKept
  std::vector<std::string> errors;  // sentences: files that could not be written, input not read

  // No more are kept of what a hostile stream could repeat without end.
  static constexpr size_t kMostKept = 1000;

  bool Clean() const { return violation_count == 0 && errors.empty(); }
};

// The report as JSON text. Any thread.
std::string ReportJson(const Report& report);

// One line for people: "disc 1: 1200000 drops, cyan 1.2, magenta 3.4, yellow 0.0 microlitres".
std::string DescribeDisc(const DiscReport& disc, size_t number);

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_REPORT_H_
