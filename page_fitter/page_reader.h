// Reads the pages of a CUPS or PWG raster stream, and tells a stream that ends from one that breaks
// off.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PAGE_FITTER_PAGE_READER_H_
#define ZR7700_PAGE_FITTER_PAGE_READER_H_

#include <cups/raster.h>

#include <cstdint>
#include <memory>
#include <span>

namespace zr7700 {

// Not for use by two threads at once. Not to be copied: the stream knows its address.
class PageReader {
 public:
  // `descriptor` stays the caller's and must stay open while the reader lives.
  explicit PageReader(int descriptor);
  PageReader(const PageReader&) = delete;
  PageReader& operator=(const PageReader&) = delete;

  // Whether the stream begins as raster does, and whether there was nothing at all.
  bool IsRaster() const { return stream_ != nullptr; }
  bool IsEmpty() const { return bytes_read_ == 0; }

  // The error that reading has met, 0 without one.
  int read_errno() const { return read_errno_; }

  enum class Next { kPage, kEnd, kBroken };
  // Goes to the next page, all lines of the one before having been read.
  Next NextPage(cups_page_header2_t& header);

  // Reads one line, cupsBytesPerLine bytes. False when the stream breaks off before its end.
  bool ReadLine(std::span<uint8_t> line);

 private:
  static ssize_t Read(void* reader, unsigned char* bytes, size_t count);

  int descriptor_;
  uint64_t bytes_read_ = 0;
  int read_errno_ = 0;
  std::unique_ptr<cups_raster_t, decltype(&cupsRasterClose)> stream_;
};

}  // namespace zr7700

#endif  // ZR7700_PAGE_FITTER_PAGE_READER_H_
