// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/stream_decoder.h"

#include <zlib.h>

#include <algorithm>
#include <utility>

#include "virtual_printer/row_data.h"

namespace zr7700::printer {
namespace {

// The places at which an item may stand, a bit for each Place, and what is expected at each place.
constexpr unsigned kAtOutside = 1, kAtInDocument = 2, kAtBeforeFeed = 4, kAtInPage = 8,
                   kAtInPass = 16;

constexpr unsigned kLegalPlaces[] = {
    /* kHeader */ kAtOutside | kAtInDocument,
    /* kDocumentStart */ kAtOutside,
    /* kDocumentEnd */ kAtInDocument,
    /* kPageStart */ kAtInDocument,
    /* kPageEnd */ kAtInPage | kAtInPass,
    /* kPageAbort */ kAtInPage | kAtInPass,
    /* kPassStart */ kAtInPage | kAtInPass,
    /* kRow */ kAtInPass,
    /* kFeed */ kAtBeforeFeed,
};

constexpr const char* kExpected[] = {
    "a print header or document-start",
    "a print header, page-start or document-end",
    "the page's feed",
    "pass-start, page-end or page-abort",
    "row, pass-start, page-end or page-abort",
};

uint32_t AddToCrc(uint32_t crc, std::span<const uint8_t> bytes) {
  return static_cast<uint32_t>(crc32(crc, bytes.data(), static_cast<uInt>(bytes.size())));
}

bool HasLegalNozzles(Family family, const PageStart& page) {
  if (family == Family::kGranite) return page.nozzles == 192 && page.pitch_lines == 1;
  return family == Family::kHeron && page.nozzles == 96 && page.pitch_lines == 2;
}

// Rows of a pass must come in rising rank: Granite line by line C, M, Y; Heron Y, then M, then C.
int64_t RankOf(Family family, const RowStart& row) {
  const auto ink = static_cast<int64_t>(InkOfPlane(row.plane));
  if (family == Family::kGranite) return int64_t{row.nozzle} * 3 + ink;
  return (2 - ink) * 65536 + row.nozzle;
}

std::string NotEqual(const char* what, uint64_t said, uint64_t counted) {
  return "The " + std::string(what) + " is said to be " + std::to_string(said) + " but is " +
         std::to_string(counted) + ".";
}

}  // namespace

void StreamDecoder::Finish() {
  reader_.Finish();
  end_is_due_ = true;
}

bool StreamDecoder::Step() {
  Item item;
  if (reader_.Next(item)) {
    offset_ = item.offset + item.sent.size();
    Judge(item);
    return true;
  }
  if (std::exchange(end_is_due_, false)) JudgeEnd();
  return false;
}

void StreamDecoder::Judge(const Item& item) {
  if (item.kind != ItemKind::kBroken) {
    if (TakePlace(item)) Handle(item);
  } else if (!item.fault.empty()) {
    Violate(item.fault_offset, item.fault);
  }
  // The filter changes the feed, so it is left out; page-start has begun the sum itself.
  const bool open = place_ >= Place::kBeforeFeed;
  if (open && item.kind != ItemKind::kFeed && item.kind != ItemKind::kPageStart) {
    open_.crc = AddToCrc(open_.crc, item.sent);
  }
}

// Says so when the item stands in a wrong place, and whether it is to be followed all the same:
// what begins or ends something does so even then, so that one fault is not told many times.
bool StreamDecoder::TakePlace(const Item& item) {
  const unsigned legal = kLegalPlaces[static_cast<size_t>(item.kind)];
  if ((legal & 1u << static_cast<unsigned>(place_)) != 0) return true;
  Violate(item.offset, std::string("There must be no ") + ItemName(item.kind) + " here but " +
                           kExpected[static_cast<size_t>(place_)] + ".");
  const bool page_open = place_ >= Place::kBeforeFeed;
  switch (item.kind) {
    case ItemKind::kHeader:
    case ItemKind::kDocumentStart:
      if (page_open) EjectPage(/*spoilt=*/true);
      place_ = Place::kOutside;
      return true;
    case ItemKind::kPageStart:
      if (page_open) EjectPage(/*spoilt=*/true);
      return true;
    case ItemKind::kDocumentEnd:
      if (page_open) EjectPage(/*spoilt=*/true);
      return page_open;
    case ItemKind::kPassStart:
    case ItemKind::kPageEnd:
    case ItemKind::kPageAbort:
      return place_ == Place::kBeforeFeed;
    default:
      return false;
  }
}

void StreamDecoder::Handle(const Item& item) {
  switch (item.kind) {
    case ItemKind::kHeader:
      return HandleHeader(item);
    case ItemKind::kDocumentStart:
      return HandleDocumentStart(item);
    case ItemKind::kDocumentEnd:
      return HandleDocumentEnd(item);
    case ItemKind::kPageStart:
      return HandlePageStart(item);
    case ItemKind::kPageEnd:
    case ItemKind::kPageAbort:
      return HandlePageEnd(item);
    case ItemKind::kPassStart:
      return HandlePassStart(item);
    case ItemKind::kRow:
      return HandleRow(item);
    case ItemKind::kFeed:
      return HandleFeed(item);
    case ItemKind::kBroken:
      return;
  }
}

void StreamDecoder::HandleHeader(const Item& item) {
  Faults faults;
  const PrintHeader header = ReadPrintHeader(item.payload, faults);
  if (!expects_headers_) faults.push_back("An engine sends no print header.");
  if (place_ == Place::kInDocument && last_page_number_ == 0) {
    faults.push_back("There must be no print header between document-start and the first page.");
  }
  listener_.OnHeader(item.offset, header);
  Violate(item, faults);
  header_waits_ = true;
}

void StreamDecoder::HandleDocumentStart(const Item& item) {
  Faults faults;
  const DocumentStart document = ReadDocumentStart(item.payload, faults);
  if (HeaderIsMissing()) faults.push_back("There is no print header before document-start.");
  listener_.OnDocumentStart(item.offset, document);
  Violate(item, faults);
  family_ = document.family;
  last_page_number_ = 0;
  document_totals_ = {};
  place_ = Place::kInDocument;
}

void StreamDecoder::HandleDocumentEnd(const Item& item) {
  const DocumentEnd said = ReadDocumentEnd(item.payload);
  listener_.OnDocumentEnd(item.offset, said);
  const DocumentEnd& counted = document_totals_;
  Faults faults;
  if (last_page_number_ == 0) faults.push_back("The document has no page.");
  if (header_waits_) faults.push_back("There is no page after the last print header.");
  if (said.pages_ended != counted.pages_ended) {
    faults.push_back(NotEqual("number of ended pages", said.pages_ended, counted.pages_ended));
  }
  if (said.pages_aborted != counted.pages_aborted) {
    faults.push_back(
        NotEqual("number of aborted pages", said.pages_aborted, counted.pages_aborted));
  }
  Violate(item, faults);
  header_waits_ = false;
  place_ = Place::kOutside;
}

void StreamDecoder::HandlePageStart(const Item& item) {
  Faults faults;
  open_ = {};
  const PageStart& start = open_.page.start = ReadPageStart(item.payload, faults);
  if (!HasLegalNozzles(family_, start)) {
    faults.push_back("The family " + std::string(FamilyName(family_)) + " has no head with " +
                     std::to_string(start.nozzles) + " nozzles of pitch " +
                     std::to_string(start.pitch_lines) + ".");
  }
  open_.usable = faults.empty();
  if (start.number != last_page_number_ + 1) {
    faults.push_back(NotEqual("page number", start.number, last_page_number_ + 1));
  }
  if (HeaderIsMissing()) faults.push_back("There is no print header before the page.");
  last_page_number_ = start.number;
  header_waits_ = false;
  open_.page.offset = item.offset;
  open_.page.family = family_;
  open_.crc = AddToCrc(0, item.sent);
  if (open_.usable) {
    PageCanvas& canvas = open_.page.canvas;
    canvas.width = start.width_dots;
    canvas.height = start.height_lines;
  }
  place_ = Place::kBeforeFeed;
  listener_.OnPageStart(item.offset, start);
  Violate(item, faults);
}

void StreamDecoder::HandleFeed(const Item& item) {
  Faults faults;
  open_.page.feed = ReadFeed(item.payload, faults);
  listener_.OnFeed(item.offset, open_.page.feed);
  Violate(item, faults);
  place_ = Place::kInPage;
}

void StreamDecoder::HandlePassStart(const Item& item) {
  Faults faults;
  EndPass();
  const PassStart pass = ReadPassStart(item.payload, faults);
  listener_.OnPassStart(item.offset, pass);
  Violate(item, faults);
  if (open_.usable) CheckPassStart(item, pass);
  open_.pass = pass;
  open_.pass_offset = item.offset;
  open_.pass_rows = 0;
  open_.last_row_rank = -1;
  ++open_.passes;
  place_ = Place::kInPass;
}

void StreamDecoder::CheckPassStart(const Item& item, const PassStart& pass) {
  const PageStart& page = open_.page.start;
  Faults faults;
  if (pass.number != open_.passes) {
    faults.push_back(NotEqual("pass number", pass.number, open_.passes));
  }
  if (open_.passes > 0 && pass.head_line < open_.pass.head_line) {
    faults.push_back("The head line falls from " + std::to_string(open_.pass.head_line) + " to " +
                     std::to_string(pass.head_line) + ".");
  }
  // Both ways: by turns, the first one forward.
  const bool alternate = open_.passes > 0 && open_.pass.reverse == 0;
  const bool reverse = page.direction == 1 || (page.direction == 0 && alternate);
  if ((pass.reverse == 1) != reverse) {
    faults.push_back(std::string("The pass must be ") + (reverse ? "reverse." : "forward."));
  }
  if (pass.column_step != page.passes) {
    faults.push_back(NotEqual("column step", pass.column_step, page.passes));
  }
  Violate(item, faults);
}

void StreamDecoder::HandleRow(const Item& item) {
  Faults faults;
  ++open_.rows;
  ++open_.pass_rows;
  if (item.payload.size() < kRowStartBytes) {
    return Violate(item.offset, "The payload of row has less than 7 bytes.");
  }
  LaidRow row;
  row.start = ReadRowStart(item.payload, faults);
  row.line = open_.pass.head_line + int64_t{row.start.nozzle} * open_.page.start.pitch_lines;
  const int lag = reverse_lag_.value_or(open_.page.start.ReverseLag());
  row.column = row.start.first_column + (open_.pass.reverse == 1 ? lag : 0);
  row.column_step = open_.pass.column_step;
  if (faults.empty() && open_.usable) {
    const std::string fault =
        UnpackRow(family_, item.payload.subspan(kRowStartBytes), row.start.cells, scratch_, cells_);
    if (fault.empty()) row.cells = cells_;
    if (!fault.empty()) faults.push_back(fault);
  }
  listener_.OnRow(item.offset, row);
  Violate(item, faults);
  if (!row.cells.empty() && CheckRow(item, row)) LayRow(item, row);
}

// Whether the row lies on the page; what else is wrong with it is only told.
bool StreamDecoder::CheckRow(const Item& item, const LaidRow& row) {
  const PageStart& page = open_.page.start;
  Faults off_page;
  if (row.start.nozzle >= page.nozzles) {
    off_page.push_back("The head has no nozzle " + std::to_string(row.start.nozzle) + ".");
  }
  if (row.line < 0 || row.line >= int64_t{page.height_lines}) {
    off_page.push_back("The row lies on line " + std::to_string(row.line) + ", off the page.");
  }
  const int64_t last = row.column + (row.start.cells - int64_t{1}) * row.column_step;
  const std::string columns =
      "The row's columns " + std::to_string(row.column) + " to " + std::to_string(last);
  if (row.column < 0 || last >= static_cast<int64_t>(page.width_dots)) {
    off_page.push_back(columns + " do not lie on the page.");
  }
  Faults others;
  if (row.column + page.left_margin_dots < 0 ||
      last + page.left_margin_dots >= static_cast<int64_t>(page.reach_dots)) {
    others.push_back(columns + " do not lie within the carriage's reach.");
  }
  if (row.cells.front() == 0 || row.cells.back() == 0) {
    others.push_back("The row's first and last cell must hold a drop.");
  }
  const int64_t rank = RankOf(family_, row.start);
  if (rank <= open_.last_row_rank) others.push_back("The row comes twice or out of its order.");
  open_.last_row_rank = rank;
  Violate(item, off_page);
  Violate(item, others);
  return off_page.empty();
}

void StreamDecoder::LayRow(const Item& item, const LaidRow& row) {
  PageCanvas& canvas = open_.page.canvas;
  canvas.Allocate();
  const size_t ink = InkOfPlane(row.start.plane);
  uint8_t* dot =
      &canvas.dots[static_cast<size_t>(row.line) * canvas.width + static_cast<size_t>(row.column)];
  std::array<uint32_t, kDropSizes + 1> counts{};
  uint32_t twice = 0;
  for (size_t i = 0; i < row.cells.size(); ++i) {
    const uint8_t cell = row.cells[i];
    ++counts[cell];
    if (cell == 0) continue;
    uint8_t& laid = dot[i * row.column_step];
    if (DropSize(laid, ink) != 0) ++twice;
    laid = static_cast<uint8_t>(laid | cell << (2 * ink));
  }
  for (size_t i = 0; i < kDropSizes; ++i) canvas.drops[ink][i] += counts[i + 1];
  if (twice == 0) return;
  Violate(item.offset, "The row lays " + std::to_string(twice) + " drops of " + kInkNames[ink] +
                           " on dots of line " + std::to_string(row.line) + " that have one.");
}

void StreamDecoder::HandlePageEnd(const Item& item) {
  const bool aborted = item.kind == ItemKind::kPageAbort;
  if (!aborted) EndPass();
  const PageTotals totals = ReadPageTotals(item.payload);
  listener_.OnPageTotals(item.offset, aborted, totals);
  CheckTotals(item, totals);
  ++(aborted ? document_totals_.pages_aborted : document_totals_.pages_ended);
  EjectPage(aborted);
}

void StreamDecoder::CheckTotals(const Item& item, const PageTotals& totals) {
  Faults faults;
  if (totals.passes != open_.passes) {
    faults.push_back(NotEqual("number of passes", totals.passes, open_.passes));
  }
  if (totals.rows != open_.rows) {
    faults.push_back(NotEqual("number of rows", totals.rows, open_.rows));
  }
  for (size_t ink = 0; ink < kInks && open_.usable; ++ink) {
    const uint64_t drops = open_.page.canvas.Drops(ink);
    if (totals.drops[ink] == drops) continue;
    const std::string what = std::string("number of ") + kInkNames[ink] + " drops";
    faults.push_back(NotEqual(what.c_str(), totals.drops[ink], drops));
  }
  if (totals.crc != open_.crc) faults.push_back(NotEqual("CRC", totals.crc, open_.crc));
  Violate(item, faults);
}

// Told when the pass is over, of the place where it began.
void StreamDecoder::EndPass() {
  if (place_ == Place::kInPass && open_.pass_rows == 0) {
    Violate(open_.pass_offset, "The pass has no row.");
  }
}

void StreamDecoder::EjectPage(bool spoilt) {
  place_ = Place::kInDocument;
  open_.page.spoilt = spoilt;
  listener_.OnPagePrinted(std::move(open_.page));
}

void StreamDecoder::JudgeEnd() {
  if (place_ == Place::kOutside) return;
  const bool page_open = place_ >= Place::kBeforeFeed;
  Violate(offset_, std::string("The stream ends inside a ") + (page_open ? "page." : "document."));
  if (page_open) EjectPage(/*spoilt=*/true);
  place_ = Place::kOutside;
}

void StreamDecoder::Violate(uint64_t offset, const std::string& sentence) {
  listener_.OnViolation(offset, sentence);
}

void StreamDecoder::Violate(const Item& item, const Faults& faults) {
  for (const std::string& fault : faults) Violate(item.offset, fault);
}

}  // namespace zr7700::printer
