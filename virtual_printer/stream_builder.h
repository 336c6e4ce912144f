// For tests: printer streams put together by hand, right ones and wrong ones. Nothing of this knows
// the decoder; it is a second reading of docs/printer-stream.md.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_STREAM_BUILDER_H_
#define ZR7700_VIRTUAL_PRINTER_STREAM_BUILDER_H_

#include <zlib.h>

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace zr7700::printer {

using Bytes = std::vector<uint8_t>;

inline Bytes& operator+=(Bytes& to, const Bytes& more) {
  to.insert(to.end(), more.begin(), more.end());
  return to;
}

inline Bytes Big(uint32_t value, int bytes) {
  Bytes result;
  for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) {
    result.push_back(static_cast<uint8_t>(value >> shift));
  }
  return result;
}

// The 16 bytes of a print header: destination 1, warning level 166250000.
inline Bytes HeaderBytes() {
  return {0x1B, 0x0B, 0x0E, 0x01, 0x01, 0x01, 0x09, 0xE8, 0xC6, 0x10, 0, 0, 0, 0, 0, 0xFE};
}

inline Bytes CommandBytes(uint8_t group, char code, const Bytes& payload) {
  Bytes bytes = {0x1B, '*', group, static_cast<uint8_t>(code)};
  for (const uint8_t byte : payload) {
    if (byte == 0x1A || byte == 0x1B) {
      bytes += {0x1A, static_cast<uint8_t>(byte - 0x1A)};
    } else {
      bytes.push_back(byte);
    }
  }
  return bytes;
}

// What a page-start says; the values of a small legal page of either family.
struct PageValues {
  uint16_t number = 1;
  uint16_t dpi = 600;
  int32_t left_margin = 1916;
  uint32_t width = 100;
  uint32_t height = 60;
  uint32_t reach = 5100;
  uint8_t media = 1;
  uint8_t passes = 1;
  uint8_t direction = 2;
  uint8_t item6 = 0;
};

// Builds streams of one document after another; keeps the sums that page-end must carry.
class StreamBuilder {
 public:
  explicit StreamBuilder(char family) : family_(family) {}

  const Bytes& bytes() const { return bytes_; }
  size_t offset() const { return bytes_.size(); }

  StreamBuilder& Raw(const Bytes& more) {
    bytes_ += more;
    if (page_open_) page_bytes_ += more;
    return *this;
  }
  StreamBuilder& Header() { return Raw(HeaderBytes()); }
  StreamBuilder& DocumentStart() {
    pages_ = aborted_ = 0;
    return Raw(CommandBytes(1, 'b', {static_cast<uint8_t>(family_), 1, 0, 142}));
  }
  StreamBuilder& DocumentEnd() {
    Bytes payload = Big(pages_, 2);
    return Raw(CommandBytes(1, 'e', payload += Big(aborted_, 2)));
  }

  Bytes PagePayload(const PageValues& page) const {
    Bytes payload = Big(page.number, 2);
    payload += Big(page.dpi, 2);
    payload += Big(page.dpi, 2);
    payload += Big(static_cast<uint32_t>(page.left_margin), 4);
    payload += Big(page.width, 4);
    payload += Big(page.height, 4);
    payload += Big(page.reach, 4);
    payload += {3, page.media, 2, 1, page.passes, page.direction, 1, 6};
    payload += family_ == 'G' ? Bytes{0, 192, 1, 3} : Bytes{0, 96, 2, 3};
    return payload += {0, 0, 0, 0, page.item6, 0, 0, 0};
  }
  StreamBuilder& PageStart(const PageValues& page = {}) {
    return PageStartPayload(PagePayload(page), page.passes);
  }
  StreamBuilder& PageStartPayload(const Bytes& payload, uint8_t step = 1) {
    page_open_ = true;
    page_bytes_.clear();
    pass_count_ = row_count_ = 0;
    drops_[0] = drops_[1] = drops_[2] = 0;
    step_ = step;
    return Raw(CommandBytes(2, 'b', payload));
  }
  StreamBuilder& Feed(uint32_t value = 138) {
    bytes_ += {0x1B, '*', 7, 'f'};
    bytes_ += Big(value, 4);
    return *this;
  }
  StreamBuilder& Pass(int32_t head_line, bool reverse = false) {
    Bytes payload = Big(pass_count_++, 4);
    payload += Big(static_cast<uint32_t>(head_line), 4);
    return Raw(CommandBytes(3, 'b', payload += {reverse ? uint8_t{1} : uint8_t{0}, step_}));
  }

  static Bytes RowPayload(uint16_t nozzle, char plane, int16_t column, uint16_t cells,
                          const Bytes& data) {
    Bytes payload = Big(nozzle, 2);
    payload.push_back(static_cast<uint8_t>(plane));
    payload += Big(static_cast<uint16_t>(column), 2);
    payload += Big(cells, 2);
    return payload += data;
  }
  StreamBuilder& RowOf(const Bytes& payload) {
    ++row_count_;
    return Raw(CommandBytes(4, 'r', payload));
  }
  // Cells as digits "0" to "3", sent as literals of one byte each.
  StreamBuilder& Row(uint16_t nozzle, char plane, int16_t column, std::string_view cells) {
    const Bytes packed = family_ == 'G' ? PackGranite(cells) : PackHeron(cells);
    Bytes data;
    for (const uint8_t byte : packed) data += {0, byte};
    for (const char cell : cells) drops_[plane == 'C' ? 0 : plane == 'M' ? 1 : 2] += cell != '0';
    return RowOf(RowPayload(nozzle, plane, column, static_cast<uint16_t>(cells.size()), data));
  }

  Bytes Totals() const {
    Bytes payload = Big(pass_count_, 4);
    payload += Big(row_count_, 4);
    for (const uint32_t drops : drops_) payload += Big(drops, 4);
    return payload +=
           Big(static_cast<uint32_t>(crc32_z(0, page_bytes_.data(), page_bytes_.size())), 4);
  }
  StreamBuilder& PageEnd() { return End('e', Totals()); }
  StreamBuilder& PageAbort() { return End('a', Totals()); }
  StreamBuilder& End(char code, const Bytes& payload) {
    page_open_ = false;
    ++(code == 'a' ? aborted_ : pages_);
    return Raw(CommandBytes(2, code, payload));
  }

  // A whole legal document with one page that has one drop in its corner.
  StreamBuilder& WholePage(const PageValues& page = {}) {
    Header().DocumentStart().PageStart(page).Feed();
    return Pass(0).Row(0, 'C', 0, "3").PageEnd().DocumentEnd();
  }

 private:
  static uint8_t Digit(std::string_view cells, size_t i) {
    return i < cells.size() ? static_cast<uint8_t>(cells[i] - '0') : uint8_t{0};
  }
  static Bytes PackGranite(std::string_view cells) {
    Bytes packed;
    for (size_t i = 0; i < cells.size(); i += 4) {
      packed.push_back(static_cast<uint8_t>(Digit(cells, i) * 64 + Digit(cells, i + 1) * 16 +
                                            Digit(cells, i + 2) * 4 + Digit(cells, i + 3)));
    }
    return packed;
  }
  static Bytes PackHeron(std::string_view cells) {
    Bytes packed;
    for (const int plane : {1, 2}) {
      for (size_t i = 0; i < cells.size(); i += 8) {
        unsigned byte = 0;
        for (size_t bit = 0; bit < 8; ++bit) {
          if ((Digit(cells, i + bit) & plane) != 0) byte |= 1u << bit;
        }
        packed.push_back(static_cast<uint8_t>(byte));
      }
    }
    return packed;
  }

  const char family_;
  Bytes bytes_;
  Bytes page_bytes_;  // what the page's CRC runs over
  bool page_open_ = false;
  uint8_t step_ = 1;
  uint32_t pages_ = 0;
  uint32_t aborted_ = 0;
  uint32_t pass_count_ = 0;
  uint32_t row_count_ = 0;
  uint32_t drops_[3] = {};
};

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_STREAM_BUILDER_H_
