// A CUPS raster stream to read from, whose page headers are looked at before libcups gets them: it
// allocates whatever a header claims, up to gigabytes for a file of two kilobytes.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DISC_RASTER_STREAM_H_
#define ZR7700_DISC_RASTER_STREAM_H_

#include <cups/raster.h>
#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "disc/raster_header.h"

namespace zr7700 {

// Not for use by two threads at once. Not to be copied or moved: libcups knows its address.
class RasterStream {
 public:
  // Reads at most `count` bytes and returns as read() does.
  using Source = ssize_t (*)(void* context, unsigned char* bytes, size_t count);

  // Reads the stream's beginning. `context` stays the caller's and must live as long.
  RasterStream(Source source, void* context);
  RasterStream(const RasterStream&) = delete;
  RasterStream& operator=(const RasterStream&) = delete;

  // Whether the stream begins as raster does, and whether there was nothing at all.
  bool IsRaster() const { return stream_ != nullptr; }
  bool IsEmpty() const { return !has_begun_; }

  enum class Next {
    kPage,
    kTooLong,  // a page with a line of more than kMostLinePixels: no line of it can be read
    kEnd,
    kBroken,  // the stream ends within a header, or the header makes no sense
  };

  // Goes to the next page, all lines of the one before having been read, and sets `header` for
  // kPage and kTooLong. The stream is at its end after kTooLong.
  Next NextPage(cups_page_header2_t& header);

  // Reads `line`; false, with errno as the source left it, when that much does not come.
  bool ReadPixels(std::span<uint8_t> line);

 private:
  static ssize_t ReadForLibcups(void* stream, unsigned char* bytes, size_t count);
  ssize_t Read(unsigned char* bytes, size_t count);
  void TakeSyncWord(std::span<const unsigned char> bytes);
  bool MayHandOnHeader(std::span<const unsigned char> bytes);

  Source source_;
  void* context_;
  std::array<unsigned char, 65536> ahead_;  // read and not yet handed on
  std::span<const unsigned char> unread_;

  bool has_begun_ = false;
  std::array<unsigned char, 4> sync_word_ = {};
  size_t sync_bytes_ = 0;
  RasterForm form_;  // once the sync word is there
  std::array<unsigned char, sizeof(cups_page_header2_t)> header_ = {};  // the page's, as it comes
  size_t header_bytes_ = 0;
  bool is_in_header_ = false;
  bool is_too_long_ = false;

  std::unique_ptr<cups_raster_t, decltype(&cupsRasterClose)> stream_;  // made last, reads at once
};

}  // namespace zr7700

#endif  // ZR7700_DISC_RASTER_STREAM_H_
