// A printer for the tests: keeps what the virtual printer's stream decoder reads in an engine's
// output. The decoder shares no code with the engine.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_TEST_PRINTER_H_
#define ZR7700_REFERENCE_ENGINE_TEST_PRINTER_H_

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "virtual_printer/stream_decoder.h"

namespace zr7700::reference_engine::testing {

struct PrintedPage {
  printer::PageStart start;
  int32_t feed = 0;  // 1/1200 inch
  std::vector<printer::PassStart> sweeps;
  bool aborted = false;
  // Drop sizes by plane (C, M, Y), width x height of them.
  std::array<std::vector<uint8_t>, printer::kInks> drops;

  uint8_t drop(size_t plane, uint32_t column, uint32_t line) const {
    return drops[plane][size_t{line} * start.width_dots + column];
  }
  uint32_t DropCount(size_t plane) const;
};

struct PrintedDocument {
  char family = 0;
  uint32_t pages_ended = 0;
  uint32_t pages_aborted = 0;
  std::vector<PrintedPage> pages;
};

class TestPrinter : private printer::StreamListener {
 public:
  // Decodes a whole stream of documents, without the filter's print headers. False when anything
  // violates the format; error() then names the first violation with its byte offset.
  bool Print(std::span<const uint8_t> stream);

  const std::string& error() const { return error_; }
  const std::vector<PrintedDocument>& documents() const { return documents_; }

 private:
  void OnDocumentStart(uint64_t offset, const printer::DocumentStart& document) override;
  void OnDocumentEnd(uint64_t offset, const printer::DocumentEnd& end) override;
  void OnPageStart(uint64_t offset, const printer::PageStart& start) override;
  void OnPassStart(uint64_t offset, const printer::PassStart& pass) override;
  void OnPagePrinted(printer::PrintedPage&& printed) override;
  void OnViolation(uint64_t offset, const std::string& sentence) override;

  std::string error_;
  std::vector<PrintedDocument> documents_;
  std::vector<printer::PassStart> sweeps_;  // of the open page
};

}  // namespace zr7700::reference_engine::testing

#endif  // ZR7700_REFERENCE_ENGINE_TEST_PRINTER_H_
