// One engine instance: what the 22 entries do, one method an entry.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_PRINT_ENGINE_H_
#define ZR7700_REFERENCE_ENGINE_PRINT_ENGINE_H_

#include <cstdint>
#include <optional>
#include <string>

#include "reference_engine/color_table.h"
#include "reference_engine/engine_status.h"
#include "reference_engine/page_renderer.h"
#include "reference_engine/page_settings.h"
#include "reference_engine/screen.h"
#include "reference_engine/stream_writer.h"
#include "zr7700/host_print_engine.h"

namespace zr7700::reference_engine {

// One band of raster lines, as HPESendBand takes it.
struct Band {
  uint32_t first_line;
  uint32_t lines;
  uint32_t pixels_per_line;
  uint32_t bytes_per_line;
  const void* data;
};

// Methods answer an EngineStatus; `reserved` arguments must be 0. An instance is used by one thread
// at a time; instances share nothing that changes. StartDocument, StartPage, SendBand and EndPage
// throw std::bad_alloc when there is no memory, and whatever the callback throws passes through all
// that send; the caller then spoils the page.
class PrintEngine {
 public:
  explicit PrintEngine(Family family) : family_(family) {}

  // Keeps the prefix of the files that change; refuses null and empty ones.
  int32_t Initialize(const char* path1, const char* path2, const char* path3, const char* path4);
  int32_t StartDocument(HPEOutputCallback output, const char* color_table_path, uint32_t reserved,
                        uint32_t code, void* context);
  // Reads the ini file and takes the properties as they stand.
  int32_t StartPage();
  int32_t SendBand(uint32_t reserved, const Band& band);
  // Gives a spoilt page up. If this very call throws, the page stays open, spoilt, unless its
  // page-end was already on its way: then it is closed.
  int32_t EndPage(uint32_t reserved);
  // A page that is still open is given up: what its finished passes have sent stays sent. If this
  // very call throws, the document stays open, unless only its last block was still on its way.
  int32_t EndDocument(uint32_t reserved);
  // Something was thrown out of a method above: a page that is open takes no more lines and can
  // only be given up, for what it has got may be half a line. Nothing happens without a page.
  void SpoilPage() { page_spoilt_ = page_.has_value(); }

  int32_t SetResolution(uint32_t axis, uint32_t dots_per_inch);
  int32_t SetLeftMargin(int32_t dots);
  int32_t SetTopMargin(int32_t dots_at_600);
  int32_t SetPrintableWidth(int32_t dots);
  int32_t SetPrintableHeight(int32_t lines);
  int32_t SetPhysicalWidth(int32_t dots);
  int32_t SetCartridge(uint32_t slot, uint32_t kind, uint32_t installed);
  int32_t SetRasterFormat(uint32_t code);
  int32_t SetAlignment(uint32_t item, uint32_t value);
  int32_t SetIntent(int32_t intent);
  int32_t SetMedia(uint32_t code);
  int32_t SetQuality(uint32_t code);
  int32_t SetTray(int32_t tray);
  int32_t SetSharpening(int32_t level);

 private:
  int32_t SetLength(int32_t value, int32_t low, int32_t high, int32_t* property) const;
  bool AcceptsBand(const Band& band) const;
  void SendPageStart(const PageSettings& settings);
  void SendFeed();
  void ClosePage(Command command);

  // Constant from the beginning.
  const Family family_;
  // Set by Initialize.
  std::string file_prefix_;
  // The document.
  bool document_open_ = false;
  bool document_started_ = false;
  uint32_t pages_ended_ = 0;
  uint32_t pages_aborted_ = 0;
  StreamWriter writer_;
  ColorTable table_;
  // The page.
  Properties properties_;
  Screen screen_;
  std::optional<PageRenderer> page_;
  uint32_t page_width_ = 0;
  uint32_t page_height_ = 0;
  uint32_t next_line_ = 0;
  bool page_spoilt_ = false;
  // The page's feed until it is sent.
  std::optional<uint32_t> due_feed_;
};

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_PRINT_ENGINE_H_
