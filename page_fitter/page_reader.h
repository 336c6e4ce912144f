// The pages of a document that comes through a descriptor.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PAGE_FITTER_PAGE_READER_H_
#define ZR7700_PAGE_FITTER_PAGE_READER_H_

#include <cups/raster.h>

#include <cstdint>
#include <span>

#include "disc/raster_stream.h"

namespace zr7700 {

// Not for use by two threads at once. Not to be copied: the stream knows its address.
class PageReader {
 public:
  // `descriptor` stays the caller's and must stay open while the reader lives.
  explicit PageReader(int descriptor);
  PageReader(const PageReader&) = delete;
  PageReader& operator=(const PageReader&) = delete;

  // As RasterStream has them.
  bool IsRaster() const { return stream_.IsRaster(); }
  bool IsEmpty() const { return stream_.IsEmpty(); }
  RasterStream::Next NextPage(cups_page_header2_t& header) { return stream_.NextPage(header); }
  bool ReadLine(std::span<uint8_t> line) { return stream_.ReadPixels(line); }

  // The error that reading has met, 0 without one.
  int read_errno() const { return read_errno_; }

 private:
  static ssize_t Read(void* reader, unsigned char* bytes, size_t count);

  int descriptor_;
  int read_errno_ = 0;
  RasterStream stream_;  // made last, reads at once
};

}  // namespace zr7700

#endif  // ZR7700_PAGE_FITTER_PAGE_READER_H_
