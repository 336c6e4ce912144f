// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/test_printer.h"

#include <zlib.h>

#include <algorithm>
#include <string_view>

namespace zr7700::reference_engine::testing {
namespace {

constexpr uint8_t kStart = 0x1B;

uint32_t Crc32(const std::vector<uint8_t>& bytes) {
  return static_cast<uint32_t>(crc32_z(0, bytes.data(), bytes.size()));
}

// Expands runs of either family; false when the data stops inside a run or uses an illegal control.
bool Expand(std::span<const uint8_t> data, bool heron, std::vector<uint8_t>* bytes) {
  for (size_t i = 0; i < data.size();) {
    const unsigned control = data[i++];
    if (control < 0x80) {
      if (i + control + 1 > data.size()) return false;
      bytes->insert(bytes->end(), &data[i], &data[i] + control + 1);
      i += control + 1;
      continue;
    }
    if (heron && control < 0xC0) {
      bytes->insert(bytes->end(), control - 0x80 + 1, 0);
      continue;
    }
    if (i == data.size() || control == 0x80) return false;
    bytes->insert(bytes->end(), heron ? control - 0xC0 + 2 : 257 - control, data[i++]);
  }
  return true;
}

}  // namespace

uint32_t PrintedPage::DropCount(size_t plane) const {
  return static_cast<uint32_t>(
      std::ranges::count_if(drops[plane], [](uint8_t size) { return size != 0; }));
}

bool TestPrinter::Fail(const std::string& what) {
  error_ = what + " at byte " + std::to_string(begin_);
  return false;
}

bool TestPrinter::Print(std::span<const uint8_t> stream) {
  stream_ = stream;
  while (next_ < stream_.size())
    if (!NextCommand() || !Execute()) return false;
  begin_ = next_;
  return !in_document_ || Fail("stream ends inside a document");
}

bool TestPrinter::NextCommand() {
  begin_ = next_;
  if (begin_ + 4 > stream_.size() || stream_[begin_] != kStart || stream_[begin_ + 1] != 0x2A)
    return Fail("no command");
  command_ = static_cast<uint16_t>(stream_[begin_ + 2] * 256 + stream_[begin_ + 3]);
  payload_.clear();
  next_ = begin_ + 4;
  if (command_ == 0x0766) {
    if (next_ + 4 > stream_.size()) return Fail("cut feed");
    payload_.assign(&stream_[next_], &stream_[next_] + 4);
    next_ += 4;
    return true;
  }
  for (; next_ < stream_.size() && stream_[next_] != kStart; ++next_) {
    if (stream_[next_] != 0x1A) {
      payload_.push_back(stream_[next_]);
      continue;
    }
    if (++next_ == stream_.size() || stream_[next_] > 1) return Fail("bad escape");
    payload_.push_back(static_cast<uint8_t>(0x1A + stream_[next_]));
  }
  return true;
}

bool TestPrinter::Execute() {
  const bool ends_page = command_ == 0x0265 || command_ == 0x0261;
  if (command_ == 0x0262) summed_.clear();
  if (command_ != 0x0766 && !ends_page)
    summed_.insert(summed_.end(), &stream_[begin_], &stream_[begin_] + (next_ - begin_));
  switch (command_) {
    case 0x0162:
      return DocumentStart();
    case 0x0165:
      return DocumentEnd();
    case 0x0262:
      return PageStart();
    case 0x0766:
      return Feed();
    case 0x0362:
      return PassStart();
    case 0x0472:
      return Row();
    case 0x0265:
      return PageEnd(false);
    case 0x0261:
      return PageEnd(true);
    default:
      return Fail("unknown command");
  }
}

bool TestPrinter::DocumentStart() {
  if (in_document_) return Fail("document in a document");
  if (payload_.size() != 4 || (payload_[0] != 'H' && payload_[0] != 'G') || payload_[1] != 1 ||
      U16(2) != 142)
    return Fail("bad document-start");
  documents_.emplace_back();
  documents_.back().family = static_cast<char>(payload_[0]);
  in_document_ = true;
  return true;
}

bool TestPrinter::DocumentEnd() {
  if (!in_document_ || in_page_ || payload_.size() != 4) return Fail("bad document-end");
  PrintedDocument& document = documents_.back();
  document.pages_ended = U16(0);
  document.pages_aborted = U16(2);
  const auto aborted = static_cast<uint32_t>(
      std::ranges::count_if(document.pages, [](const PrintedPage& page) { return page.aborted; }));
  if (document.pages_aborted != aborted || document.pages_ended + aborted != document.pages.size())
    return Fail("wrong page counts");
  in_document_ = false;
  return true;
}

bool TestPrinter::PageStart() {
  if (!in_document_ || in_page_ || payload_.size() != 42) return Fail("bad page-start");
  std::vector<PrintedPage>& pages = documents_.back().pages;
  pages.emplace_back();
  PrintedPage& page = pages.back();
  page.number = U16(0);
  page.x_dpi = U16(2);
  page.y_dpi = U16(4);
  page.left_margin = static_cast<int>(U32(6));
  page.width = U32(10);
  page.height = U32(14);
  page.physical_width = U32(18);
  page.quality = payload_[22];
  page.media = payload_[23];
  page.passes = payload_[26];
  page.direction = payload_[27];
  page.mixing = payload_[28];
  page.sharpening = payload_[29];
  page.nozzles = U16(30);
  page.pitch = payload_[32];
  std::copy_n(&payload_[34], 8, page.alignment.begin());
  const bool heron = documents_.back().family == 'H';
  if (page.number != pages.size() || page.width < 1 || page.width > 5100 || page.height < 1 ||
      page.height > 10200 || payload_[24] != 2 || payload_[25] != 1 || payload_[33] != 3 ||
      page.nozzles != (heron ? 96U : 192U) || page.pitch != (heron ? 2U : 1U))
    return Fail("page-start out of range");
  for (auto& plane : page.drops) plane.assign(size_t{page.width} * page.height, 0);
  in_page_ = true;
  fed_ = false;
  rows_ = 0;
  return true;
}

bool TestPrinter::Feed() {
  if (!in_page_ || fed_) return Fail("feed out of place");
  page().feed = U32(0);
  fed_ = true;
  return true;
}

bool TestPrinter::PassStart() {
  if (!in_page_ || !fed_ || payload_.size() != 10) return Fail("bad pass-start");
  std::vector<PrintedPass>& sweeps = page().sweeps;
  const PrintedPass pass = {static_cast<int>(U32(4)), payload_[8] == 1, 0};
  const bool due_reverse = page().direction == 0   ? sweeps.size() % 2 == 1
                           : page().direction == 1 ? true
                                                   : false;
  if (U32(0) != sweeps.size() || payload_[9] != page().passes || payload_[8] > 1 ||
      pass.reverse != due_reverse || (!sweeps.empty() && sweeps.back().rows == 0) ||
      (!sweeps.empty() && pass.head_line < sweeps.back().head_line))
    return Fail("pass-start out of range");
  sweeps.push_back(pass);
  pass_rows_.clear();
  last_order_ = -1;
  return true;
}

bool TestPrinter::Row() {
  if (!in_page_ || page().sweeps.empty() || payload_.size() < 8) return Fail("bad row");
  constexpr std::string_view kPlanes = "CMY";
  const bool heron = documents_.back().family == 'H';
  PrintedPass& pass = page().sweeps.back();
  const uint32_t nozzle = U16(0);
  const size_t plane = kPlanes.find(static_cast<char>(payload_[2]));
  const int line = pass.head_line + static_cast<int>(nozzle * page().pitch);
  if (nozzle >= page().nozzles || plane == std::string_view::npos || line < 0 ||
      line >= static_cast<int>(page().height))
    return Fail("row out of range");
  const int64_t order = heron ? static_cast<int64_t>((2 - plane) * 1000 + nozzle)
                              : static_cast<int64_t>(nozzle * 3 + plane);
  if (order <= last_order_) return Fail("row out of order");
  last_order_ = order;
  Bytes levels;
  if (!DecodeCells(U16(5), &levels)) return Fail("bad row data");
  if (levels.front() == 0 || levels.back() == 0) return Fail("row not trimmed");
  int first_column = static_cast<int16_t>(U16(3));
  if (pass.reverse) first_column += static_cast<int8_t>(page().alignment[4]);
  ++pass.rows;
  ++rows_;
  return LayCells(first_column, levels, plane, static_cast<uint32_t>(line));
}

bool TestPrinter::DecodeCells(size_t cells, Bytes* levels) {
  const bool heron = documents_.back().family == 'H';
  Bytes packed;
  if (cells == 0 || cells > 5100 || !Expand(std::span(payload_).subspan(7), heron, &packed))
    return false;
  const size_t plane_bytes = (cells + 7) / 8;
  if (packed.size() != (heron ? 2 * plane_bytes : (cells + 3) / 4)) return false;
  for (size_t i = 0; i < cells; ++i) {
    const int level =
        heron ? (packed[i / 8] >> i % 8 & 1) + 2 * (packed[plane_bytes + i / 8] >> i % 8 & 1)
              : packed[i / 4] >> (6 - 2 * (i % 4)) & 3;
    levels->push_back(static_cast<uint8_t>(level));
  }
  return true;
}

bool TestPrinter::LayCells(int first_column, const Bytes& levels, size_t plane, uint32_t line) {
  for (size_t i = 0; i < levels.size(); ++i) {
    const int column = first_column + static_cast<int>(i * page().passes);
    const int place = column + page().left_margin;
    if (column < 0 || column >= static_cast<int>(page().width) || place < 0 ||
        place >= static_cast<int>(page().physical_width))
      return Fail("cell off the page");
    uint8_t& dot = page().drops[plane][size_t{line} * page().width + static_cast<size_t>(column)];
    if (dot != 0 && levels[i] != 0) return Fail("dot laid twice");
    dot = dot != 0 ? dot : levels[i];
  }
  return true;
}

bool TestPrinter::PageEnd(bool aborted) {
  if (!in_page_ || !fed_ || payload_.size() != 24) return Fail("bad page end");
  PrintedPage& page = this->page();
  page.aborted = aborted;
  if (U32(0) != page.sweeps.size() || U32(4) != rows_) return Fail("wrong pass or row count");
  for (size_t plane = 0; plane < 3; ++plane)
    if (U32(8 + plane * 4) != page.DropCount(plane)) return Fail("wrong drop count");
  if (U32(20) != Crc32(summed_)) return Fail("wrong checksum");
  in_page_ = false;
  return true;
}

}  // namespace zr7700::reference_engine::testing
