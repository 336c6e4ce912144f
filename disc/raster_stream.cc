// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/raster_stream.h"

#include <algorithm>
#include <cstring>

namespace zr7700 {
namespace {

// libcups fills a buffer of at least this size when it wants a few bytes of a compressed line. It
// is given one: with nothing read ahead there, the next page's header is asked for here.
constexpr size_t kReadAheadOfLibcups = 65536;

}  // namespace

RasterStream::RasterStream(Source source, void* context)
    : source_(source),
      context_(context),
      stream_(cupsRasterOpenIO(&RasterStream::ReadForLibcups, this, CUPS_RASTER_READ),
              &cupsRasterClose) {}

RasterStream::Next RasterStream::NextPage(cups_page_header2_t& header) {
  if (is_too_long_) return Next::kEnd;
  is_in_header_ = true;
  header_bytes_ = 0;
  const bool has_page = cupsRasterReadHeader2(stream_.get(), &header) != 0;
  is_in_header_ = false;
  if (is_too_long_) {
    header = DecodeHeader(header_, form_);
    return Next::kTooLong;
  }
  if (has_page) return Next::kPage;
  return header_bytes_ == 0 ? Next::kEnd : Next::kBroken;
}

bool RasterStream::ReadPixels(std::span<uint8_t> line) {
  const auto count = static_cast<unsigned>(line.size());
  return !is_too_long_ && count != 0 &&
         cupsRasterReadPixels(stream_.get(), line.data(), count) == count;
}

ssize_t RasterStream::ReadForLibcups(void* stream, unsigned char* bytes, size_t count) {
  return static_cast<RasterStream*>(stream)->Read(bytes, count);
}

ssize_t RasterStream::Read(unsigned char* bytes, size_t count) {
  if (unread_.empty()) {
    const ssize_t got = source_(context_, ahead_.data(), ahead_.size());
    if (got <= 0) return got;
    unread_ = std::span(ahead_).first(static_cast<size_t>(got));
    has_begun_ = true;
  }
  const bool for_read_ahead = form_.is_compressed && count >= kReadAheadOfLibcups;
  const auto given = unread_.first(for_read_ahead ? 1 : std::min(count, unread_.size()));
  if (is_in_header_ && !MayHandOnHeader(given)) return 0;
  memcpy(bytes, given.data(), given.size());
  unread_ = unread_.subspan(given.size());
  if (sync_bytes_ < sync_word_.size()) TakeSyncWord(given);
  return static_cast<ssize_t>(given.size());
}

void RasterStream::TakeSyncWord(std::span<const unsigned char> bytes) {
  for (const unsigned char byte : bytes) {
    if (sync_bytes_ < sync_word_.size()) sync_word_[sync_bytes_++] = byte;
  }
  if (sync_bytes_ == sync_word_.size()) form_ = FormOfRaster(sync_word_);
}

// Keeps the bytes of a header; false with the last of them when its line is too long.
bool RasterStream::MayHandOnHeader(std::span<const unsigned char> bytes) {
  for (const unsigned char byte : bytes) {
    if (header_bytes_ < form_.header_bytes) header_[header_bytes_++] = byte;
  }
  if (header_bytes_ < form_.header_bytes) return true;
  is_too_long_ = IsLineTooLong(DecodeHeader(header_, form_));
  return !is_too_long_;
}

}  // namespace zr7700
