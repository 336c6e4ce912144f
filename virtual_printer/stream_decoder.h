// Decodes the printer stream strictly: everything that docs/printer-stream.md asks for is checked,
// and every violation is told with the offset of the item (or byte) that violates it. The drops are
// laid on the page's grid.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_STREAM_DECODER_H_
#define ZR7700_VIRTUAL_PRINTER_STREAM_DECODER_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "virtual_printer/item_reader.h"
#include "virtual_printer/page_canvas.h"
#include "virtual_printer/stream_formats.h"

namespace zr7700::printer {

// A page with its drops, as it leaves the printer.
struct PrintedPage {
  uint64_t offset = 0;  // of its page-start
  Family family{};
  PageStart start;
  int32_t feed = 0;     // 1/1200 inch, as received
  bool spoilt = false;  // aborted, or cut short
  PageCanvas canvas;    // of width 0 when the page-start's values were illegal
};

// A row that lies on the page.
struct LaidRow {
  RowStart start;
  int64_t line = 0;
  int32_t column = 0;  // of the first cell, the reverse lag undone
  uint32_t column_step = 0;
  std::span<const uint8_t> cells;  // drop sizes 0 to 3; valid during the call
};

// Hears what the stream says, item by item, on the decoder's thread. An item that violates the
// format is told too, as far as it can be read, before its violations.
class StreamListener {
 public:
  virtual ~StreamListener() = default;
  virtual void OnHeader(uint64_t /*offset*/, const PrintHeader&) {}
  virtual void OnDocumentStart(uint64_t /*offset*/, const DocumentStart&) {}
  virtual void OnDocumentEnd(uint64_t /*offset*/, const DocumentEnd&) {}
  virtual void OnPageStart(uint64_t /*offset*/, const PageStart&) {}
  virtual void OnFeed(uint64_t /*offset*/, int32_t /*feed*/) {}
  virtual void OnPassStart(uint64_t /*offset*/, const PassStart&) {}
  virtual void OnRow(uint64_t /*offset*/, const LaidRow&) {}
  virtual void OnPageTotals(uint64_t /*offset*/, bool /*aborted*/, const PageTotals&) {}
  // The disc comes out; also when the page was cut short.
  virtual void OnPagePrinted(PrintedPage&&) {}
  virtual void OnViolation(uint64_t /*offset*/, const std::string& /*sentence*/) {}
};

// Used by one thread.
class StreamDecoder {
 public:
  // `listener` must outlive the decoder.
  explicit StreamDecoder(StreamListener& listener) : listener_(listener) {}

  // How many columns further right than told the printer lays drops in reverse passes from now on;
  // nothing: what the stream says that the engine was told.
  void SetReverseLag(std::optional<int> columns) { reverse_lag_ = columns; }

  // Takes the stream for what the engine alone sends, as it comes to the filter: no print header is
  // missed, and any is a violation. To be called before the first Step.
  void ExpectNoHeaders() { expects_headers_ = false; }

  // Adds the bytes that follow; they are copied.
  void Append(std::span<const uint8_t> bytes) { reader_.Append(bytes); }

  // Says that no bytes follow. The end itself is judged by the Step that finds nothing left.
  void Finish();

  // Decodes one item. False when there is none that is complete.
  bool Step();

 private:
  // Where in the grammar the stream stands.
  enum class Place { kOutside, kInDocument, kBeforeFeed, kInPage, kInPass, kPlaces };

  struct OpenPage {
    PrintedPage page;
    bool usable = false;  // the page-start's values are legal
    uint32_t crc = 0;
    uint32_t passes = 0;
    uint32_t rows = 0;
    PassStart pass;
    uint64_t pass_offset = 0;
    uint32_t pass_rows = 0;
    int64_t last_row_rank = -1;
  };

  void Judge(const Item& item);
  bool TakePlace(const Item& item);
  void Handle(const Item& item);
  void HandleHeader(const Item& item);
  void HandleDocumentStart(const Item& item);
  void HandleDocumentEnd(const Item& item);
  void HandlePageStart(const Item& item);
  void HandleFeed(const Item& item);
  void HandlePassStart(const Item& item);
  void CheckPassStart(const Item& item, const PassStart& pass);
  void HandleRow(const Item& item);
  bool CheckRow(const Item& item, const LaidRow& row);
  void LayRow(const Item& item, const LaidRow& row);
  void HandlePageEnd(const Item& item);
  void CheckTotals(const Item& item, const PageTotals& totals);
  void EndPass();
  void EjectPage(bool spoilt);
  bool HeaderIsMissing() const { return expects_headers_ && !header_waits_; }
  void JudgeEnd();
  void Violate(uint64_t offset, const std::string& sentence);
  void Violate(const Item& item, const Faults& faults);

  StreamListener& listener_;
  ItemReader reader_;
  std::optional<int> reverse_lag_;
  Place place_ = Place::kOutside;
  bool expects_headers_ = true;
  bool header_waits_ = false;  // a print header has come that no page has used
  Family family_{};
  uint64_t offset_ = 0;  // behind the last item
  bool end_is_due_ = false;
  // Of the open document.
  uint32_t last_page_number_ = 0;
  DocumentEnd document_totals_;
  OpenPage open_;
  std::vector<uint8_t> scratch_;
  std::vector<uint8_t> cells_;
};

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_STREAM_DECODER_H_
