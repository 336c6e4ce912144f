// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/stream_formats.h"

#include <algorithm>
#include <initializer_list>
#include <numeric>

namespace zr7700::printer {
namespace {

// Takes big-endian numbers off the front of a payload, whose length has been checked.
class Fields {
 public:
  explicit Fields(std::span<const uint8_t> bytes) : bytes_(bytes) {}

  uint8_t Take8() { return static_cast<uint8_t>(Take(1)); }
  uint16_t Take16() { return static_cast<uint16_t>(Take(2)); }
  uint32_t Take32() { return Take(4); }
  int16_t TakeSigned16() { return static_cast<int16_t>(Take16()); }
  int32_t TakeSigned32() { return static_cast<int32_t>(Take32()); }

 private:
  uint32_t Take(size_t count) {
    uint32_t value = 0;
    for (const uint8_t byte : bytes_.first(count)) value = value << 8 | byte;
    bytes_ = bytes_.subspan(count);
    return value;
  }

  std::span<const uint8_t> bytes_;
};

void WantRange(const char* what, int64_t value, int64_t lowest, int64_t highest, Faults& faults) {
  if (value >= lowest && value <= highest) return;
  faults.push_back("The " + std::string(what) + " is " + std::to_string(value) + ", not " +
                   std::to_string(lowest) + " to " + std::to_string(highest) + ".");
}

void WantOneOf(const char* what, int64_t value, std::initializer_list<int64_t> legal,
               Faults& faults) {
  if (std::find(legal.begin(), legal.end(), value) != legal.end()) return;
  std::string list;
  for (const int64_t choice : legal) list += (list.empty() ? "" : ", ") + std::to_string(choice);
  faults.push_back("The " + std::string(what) + " is " + std::to_string(value) + ", not " +
                   (legal.size() > 1 ? "one of " : "") + list + ".");
}

void CheckPageStart(const PageStart& page, Faults& faults) {
  WantOneOf("horizontal resolution", page.resolution_dpi, {300, 600}, faults);
  WantOneOf("vertical resolution", page.vertical_resolution_dpi, {page.resolution_dpi}, faults);
  WantRange("left margin", page.left_margin_dots, -5100, 5100, faults);
  WantRange("printable width", page.width_dots, 1, 5100, faults);
  WantRange("printable height", page.height_lines, 1, 10200, faults);
  WantRange("physical width", page.reach_dots, 1, 5100, faults);
  WantOneOf("print quality", page.quality, {2, 3, 4}, faults);
  WantOneOf("media", page.media, {1, 2, 7, 8, 9}, faults);
  WantOneOf("tray", page.tray, {2}, faults);
  WantOneOf("page intent", page.intent, {1}, faults);
  WantOneOf("number of passes", page.passes, {1, 2, 4, 8}, faults);
  WantOneOf("direction", page.direction, {0, 1, 2}, faults);
  WantOneOf("drop mixing", page.mixing, {1, 2}, faults);
  WantRange("sharpening level", page.sharpening, 1, 12, faults);
  WantOneOf("number of planes", page.planes, {3}, faults);
}

}  // namespace

const char* FamilyName(Family family) {
  if (family == Family::kHeron) return "Heron";
  return family == Family::kGranite ? "Granite" : "unknown";
}

size_t InkOfPlane(uint8_t plane) {
  switch (plane) {
    case 'C':
      return 0;
    case 'M':
      return 1;
    case 'Y':
      return 2;
    default:
      return kInks;
  }
}

PrintHeader ReadPrintHeader(std::span<const uint8_t> payload, Faults& faults) {
  Fields fields(payload.subspan(5));
  PrintHeader header;
  header.destination = fields.Take8();
  header.ink_warning = fields.Take32();
  const auto zeros = payload.subspan(10, 5);
  if (std::any_of(zeros.begin(), zeros.end(), [](uint8_t byte) { return byte != 0; })) {
    faults.push_back("Bytes 10 to 14 of a print header must be 0.");
  }
  const auto summed = payload.first(15);
  const unsigned sum = std::accumulate(summed.begin(), summed.end(), 0u) % 256;
  WantOneOf("checksum of the print header", payload[15], {sum}, faults);
  header.right = faults.empty();
  return header;
}

DocumentStart ReadDocumentStart(std::span<const uint8_t> payload, Faults& faults) {
  Fields fields(payload);
  DocumentStart document;
  document.family = static_cast<Family>(fields.Take8());
  document.version = fields.Take8();
  document.job_code = fields.Take16();
  WantOneOf("family", static_cast<uint8_t>(document.family), {'H', 'G'}, faults);
  WantOneOf("format version", document.version, {1}, faults);
  WantOneOf("job code", document.job_code, {142}, faults);
  return document;
}

DocumentEnd ReadDocumentEnd(std::span<const uint8_t> payload) {
  Fields fields(payload);
  DocumentEnd document;
  document.pages_ended = fields.Take16();
  document.pages_aborted = fields.Take16();
  return document;
}

PageStart ReadPageStart(std::span<const uint8_t> payload, Faults& faults) {
  Fields fields(payload);
  PageStart page;
  page.number = fields.Take16();
  page.resolution_dpi = fields.Take16();
  page.vertical_resolution_dpi = fields.Take16();
  page.left_margin_dots = fields.TakeSigned32();
  page.width_dots = fields.Take32();
  page.height_lines = fields.Take32();
  page.reach_dots = fields.Take32();
  for (uint8_t PageStart::*field :
       {&PageStart::quality, &PageStart::media, &PageStart::tray, &PageStart::intent,
        &PageStart::passes, &PageStart::direction, &PageStart::mixing, &PageStart::sharpening}) {
    page.*field = fields.Take8();
  }
  page.nozzles = fields.Take16();
  page.pitch_lines = fields.Take8();
  page.planes = fields.Take8();
  for (uint8_t& item : page.alignment) item = fields.Take8();
  CheckPageStart(page, faults);
  return page;
}

int32_t ReadFeed(std::span<const uint8_t> payload, Faults& faults) {
  const int32_t feed = Fields(payload).TakeSigned32();
  WantRange("feed", feed, -12000, 24000, faults);
  return feed;
}

PassStart ReadPassStart(std::span<const uint8_t> payload, Faults& faults) {
  Fields fields(payload);
  PassStart pass;
  pass.number = fields.Take32();
  pass.head_line = fields.TakeSigned32();
  pass.reverse = fields.Take8();
  pass.column_step = fields.Take8();
  WantOneOf("pass's direction", pass.reverse, {0, 1}, faults);
  return pass;
}

RowStart ReadRowStart(std::span<const uint8_t> payload, Faults& faults) {
  Fields fields(payload);
  RowStart row;
  row.nozzle = fields.Take16();
  row.plane = fields.Take8();
  row.first_column = fields.TakeSigned16();
  row.cells = fields.Take16();
  if (InkOfPlane(row.plane) == kInks) {
    faults.push_back("The plane is " + std::to_string(row.plane) + ", not one of C, M, Y.");
  }
  WantRange("number of cells", row.cells, 1, 5100, faults);
  return row;
}

PageTotals ReadPageTotals(std::span<const uint8_t> payload) {
  Fields fields(payload);
  PageTotals totals;
  totals.passes = fields.Take32();
  totals.rows = fields.Take32();
  for (uint32_t& drops : totals.drops) drops = fields.Take32();
  totals.crc = fields.Take32();
  return totals;
}

}  // namespace zr7700::printer
