// Writes pages as a CUPS raster stream.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DISC_PAGE_WRITER_H_
#define ZR7700_DISC_PAGE_WRITER_H_

#include <cups/raster.h>

#include <memory>

#include "disc/canvas.h"

namespace zr7700 {

// Not for use by two threads at once.
class PageWriter {
 public:
  // `descriptor` stays the caller's and must stay open while the writer lives.
  explicit PageWriter(int descriptor);

  // Writes one page of the canvas's size; `header` says chunky red, green and blue of 8 bits.
  // False, with errno set, when not all of it could be written.
  bool Write(const cups_page_header2_t& header, const Canvas& canvas);

 private:
  std::unique_ptr<cups_raster_t, decltype(&cupsRasterClose)> stream_;
};

}  // namespace zr7700

#endif  // ZR7700_DISC_PAGE_WRITER_H_
