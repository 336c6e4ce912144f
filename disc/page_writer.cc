// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/page_writer.h"

#include <cerrno>

namespace zr7700 {

PageWriter::PageWriter(int descriptor)
    : stream_(cupsRasterOpen(descriptor, CUPS_RASTER_WRITE), &cupsRasterClose) {}

bool PageWriter::Write(const cups_page_header2_t& header, const Canvas& canvas) {
  if (stream_ == nullptr) return false;
  cups_page_header2_t written = header;
  if (cupsRasterWriteHeader2(stream_.get(), &written) == 0) return false;
  for (uint32_t y = 0; y < canvas.height(); ++y) {
    const std::span<const uint8_t> line = canvas.Line(y);
    // The library takes the bytes as its own to change, and changes none that are 8 bits each.
    auto* const bytes = const_cast<uint8_t*>(line.data());
    if (cupsRasterWritePixels(stream_.get(), bytes, static_cast<unsigned>(line.size())) == 0) {
      return false;
    }
  }
  return true;
}

}  // namespace zr7700
