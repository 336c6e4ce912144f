// A printer for the tests: executes a stream strictly, straight from docs/printer-stream.md, and
// shares no code with the engine.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_TEST_PRINTER_H_
#define ZR7700_REFERENCE_ENGINE_TEST_PRINTER_H_

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace zr7700::reference_engine::testing {

struct PrintedPass {
  int head_line = 0;
  bool reverse = false;
  uint32_t rows = 0;
};

struct PrintedPage {
  // Page-start, field by field.
  uint32_t number = 0;
  uint32_t x_dpi = 0;
  uint32_t y_dpi = 0;
  int left_margin = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t physical_width = 0;
  uint32_t quality = 0;
  uint32_t media = 0;
  uint32_t passes = 0;
  uint32_t direction = 0;
  uint32_t mixing = 0;
  uint32_t sharpening = 0;
  uint32_t nozzles = 0;
  uint32_t pitch = 0;
  std::array<uint8_t, 8> alignment = {};
  uint32_t feed = 0;
  std::vector<PrintedPass> sweeps;
  bool aborted = false;
  // Drop sizes by plane (C, M, Y), width x height of them.
  std::array<std::vector<uint8_t>, 3> drops;

  uint8_t drop(size_t plane, uint32_t column, uint32_t line) const {
    return drops[plane][size_t{line} * width + column];
  }
  uint32_t DropCount(size_t plane) const;
};

struct PrintedDocument {
  char family = 0;
  uint32_t pages_ended = 0;
  uint32_t pages_aborted = 0;
  std::vector<PrintedPage> pages;
};

class TestPrinter {
 public:
  // Executes a whole stream of documents, without the filter's print headers. False at the first
  // violation; error() then names it with its byte offset.
  bool Print(std::span<const uint8_t> stream);

  const std::string& error() const { return error_; }
  const std::vector<PrintedDocument>& documents() const { return documents_; }

 private:
  using Bytes = std::vector<uint8_t>;

  bool Fail(const std::string& what);
  bool NextCommand();
  bool Execute();
  bool DocumentStart();
  bool PageStart();
  bool Feed();
  bool PassStart();
  bool Row();
  bool PageEnd(bool aborted);
  bool DocumentEnd();
  bool DecodeCells(size_t cells, Bytes* levels);
  bool LayCells(int first_column, const Bytes& levels, size_t plane, uint32_t line);
  uint32_t U16(size_t at) const { return payload_[at] * 256U + payload_[at + 1]; }
  uint32_t U32(size_t at) const { return U16(at) * 65536U + U16(at + 2); }
  PrintedPage& page() { return documents_.back().pages.back(); }

  std::span<const uint8_t> stream_;
  size_t begin_ = 0;
  size_t next_ = 0;
  uint16_t command_ = 0;
  Bytes payload_;
  bool in_document_ = false;
  bool in_page_ = false;
  bool fed_ = false;
  uint32_t rows_ = 0;
  std::set<std::pair<size_t, uint32_t>> pass_rows_;
  int64_t last_order_ = -1;
  // The page's bytes that the checksum covers.
  Bytes summed_;
  std::string error_;
  std::vector<PrintedDocument> documents_;
};

}  // namespace zr7700::reference_engine::testing

#endif  // ZR7700_REFERENCE_ENGINE_TEST_PRINTER_H_
