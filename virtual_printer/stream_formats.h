// What the items of the printer stream hold, and which values are legal in each by itself.
// docs/printer-stream.md has the tables.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_STREAM_FORMATS_H_
#define ZR7700_VIRTUAL_PRINTER_STREAM_FORMATS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zr7700::printer {

// The inks in the order that every table of this folder has them in.
inline constexpr size_t kInks = 3;
inline constexpr std::array<const char*, kInks> kInkNames = {"cyan", "magenta", "yellow"};

enum class Family : uint8_t { kHeron = 'H', kGranite = 'G' };

// The family's name; "unknown" for a value that is none.
const char* FamilyName(Family family);

// Sentences that each say what is wrong with one value.
using Faults = std::vector<std::string>;

struct PrintHeader {
  uint8_t destination = 0;
  uint32_t ink_warning = 0;  // ink-use counts
  bool right = false;        // every byte is as it must be
};

struct DocumentStart {
  Family family{};
  uint8_t version = 0;
  uint16_t job_code = 0;
};

struct DocumentEnd {
  uint16_t pages_ended = 0;
  uint16_t pages_aborted = 0;
};

struct PageStart {
  uint16_t number = 0;
  uint16_t resolution_dpi = 0;           // of the columns
  uint16_t vertical_resolution_dpi = 0;  // of the lines; equal to it
  int32_t left_margin_dots = 0;
  uint32_t width_dots = 0;
  uint32_t height_lines = 0;
  uint32_t reach_dots = 0;  // the carriage's
  uint8_t quality = 0;
  uint8_t media = 0;
  uint8_t tray = 0;
  uint8_t intent = 0;
  uint8_t passes = 0;
  uint8_t direction = 0;  // 0 both ways, 1 reverse only, 2 forward only
  uint8_t mixing = 0;
  uint8_t sharpening = 0;
  uint16_t nozzles = 0;  // of each ink
  uint8_t pitch_lines = 0;
  uint8_t planes = 0;
  std::array<uint8_t, 8> alignment{};  // items 0, 1, 2, 3, 6, 14, 7, 9

  // How far to the right of where it was told the carriage lays drops in a reverse pass, in
  // columns, as the engine was told.
  int8_t ReverseLag() const { return static_cast<int8_t>(alignment[4]); }
};

struct PassStart {
  uint32_t number = 0;
  int32_t head_line = 0;  // under nozzle 0
  uint8_t reverse = 0;
  uint8_t column_step = 0;
};

// A row but for its data.
struct RowStart {
  uint16_t nozzle = 0;
  uint8_t plane = 0;  // 'C', 'M' or 'Y'
  int16_t first_column = 0;
  uint16_t cells = 0;
};
inline constexpr size_t kRowStartBytes = 7;

// Page-end and page-abort.
struct PageTotals {
  uint32_t passes = 0;
  uint32_t rows = 0;
  std::array<uint32_t, kInks> drops{};
  uint32_t crc = 0;
};

// Each reads a payload of its command's length (a row's: at least 7 bytes; a header's: all 16) and
// appends to `faults` what is wrong with the values taken by themselves. Any thread.
PrintHeader ReadPrintHeader(std::span<const uint8_t> payload, Faults& faults);
DocumentStart ReadDocumentStart(std::span<const uint8_t> payload, Faults& faults);
DocumentEnd ReadDocumentEnd(std::span<const uint8_t> payload);
PageStart ReadPageStart(std::span<const uint8_t> payload, Faults& faults);
int32_t ReadFeed(std::span<const uint8_t> payload, Faults& faults);
PassStart ReadPassStart(std::span<const uint8_t> payload, Faults& faults);
RowStart ReadRowStart(std::span<const uint8_t> payload, Faults& faults);
PageTotals ReadPageTotals(std::span<const uint8_t> payload);

// 0, 1, 2 for 'C', 'M', 'Y'; kInks for any other letter.
size_t InkOfPlane(uint8_t plane);

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_STREAM_FORMATS_H_
