// Turns a printed page into the pictures of its disc, beside the thread that runs the printer: its
// status records must go on meanwhile.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_DISC_MAKER_H_
#define ZR7700_VIRTUAL_PRINTER_DISC_MAKER_H_

#include <future>
#include <optional>
#include <string>

#include "virtual_printer/report.h"
#include "virtual_printer/stream_decoder.h"

namespace zr7700::printer {

// Measures the page, whose dots are allocated if it has none, and writes STEM.png and
// STEM-small.png. A page whose page-start was illegal has no picture. Any thread.
DiscReport MakeDisc(PrintedPage& page, const std::string& stem, int diameter_mm);

// One disc at a time. Used by one thread.
class DiscMaker {
 public:
  // Begins a disc; there must be none in the making.
  void Begin(PrintedPage&& page, std::string stem, int diameter_mm);

  bool Busy() const { return result_.valid(); }

  // The disc that has become ready, once.
  std::optional<DiscReport> TakeReady();

 private:
  std::future<DiscReport> result_;
};

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_DISC_MAKER_H_
