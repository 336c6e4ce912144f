// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/raster_header.h"

#include <algorithm>

namespace zr7700 {
namespace {

// The words from AdvanceDistance on; behind them stand texts.
constexpr size_t kFirstWord = 256;
constexpr size_t kWords = 81;

constexpr uint32_t Swapped(uint32_t word) {
  return word << 24 | (word & 0xFF00) << 8 | (word >> 8 & 0xFF00) | word >> 24;
}

uint32_t BigEndian(std::span<const unsigned char> bytes, size_t at) {
  return uint32_t{bytes[at]} << 24 | uint32_t{bytes[at + 1]} << 16 | uint32_t{bytes[at + 2]} << 8 |
         uint32_t{bytes[at + 3]};
}

void SwapWords(cups_page_header2_t& header) {
  auto* const bytes = reinterpret_cast<unsigned char*>(&header);
  for (size_t i = 0; i < kWords; ++i) {
    uint32_t word;
    memcpy(&word, bytes + kFirstWord + 4 * i, sizeof word);
    word = Swapped(word);
    memcpy(bytes + kFirstWord + 4 * i, &word, sizeof word);
  }
}

// Only what tells a line's length; the rest is libcups's to make up.
cups_page_header2_t ShortHeader(std::span<const unsigned char> bytes) {
  cups_page_header2_t header = {};
  header.cupsBitsPerPixel = bytes[0];
  header.cupsWidth = BigEndian(bytes, 12);
  header.cupsHeight = BigEndian(bytes, 16);
  const uint64_t line_bytes = uint64_t{header.cupsWidth} * header.cupsBitsPerPixel / 8;
  header.cupsBytesPerLine = static_cast<uint32_t>(std::min<uint64_t>(line_bytes, UINT32_MAX));
  return header;
}

}  // namespace

RasterForm FormOfRaster(const std::array<unsigned char, 4>& sync_word) {
  uint32_t word;
  memcpy(&word, sync_word.data(), sizeof word);
  constexpr size_t kOldBytes = sizeof(cups_page_header_t);
  constexpr size_t kBytes = sizeof(cups_page_header2_t);
  switch (word) {
    case CUPS_RASTER_SYNC:
      return {.header_bytes = kBytes};
    case CUPS_RASTER_REVSYNC:
      return {.header_bytes = kBytes, .is_swapped = true};
    case CUPS_RASTER_SYNCv1:
      return {.header_bytes = kOldBytes};
    case CUPS_RASTER_REVSYNCv1:
      return {.header_bytes = kOldBytes, .is_swapped = true};
    case CUPS_RASTER_SYNCv2:
      return {.header_bytes = kBytes, .is_compressed = true};
    case CUPS_RASTER_REVSYNCv2:
      return {.header_bytes = kBytes, .is_swapped = true, .is_compressed = true};
    case CUPS_RASTER_SYNCapple:
    case CUPS_RASTER_REVSYNCapple:
      return {.header_bytes = kShortHeaderBytes, .is_compressed = true};
    default:
      return {};
  }
}

cups_page_header2_t DecodeHeader(std::span<const unsigned char> bytes, const RasterForm& form) {
  if (form.header_bytes == kShortHeaderBytes) return ShortHeader(bytes);
  cups_page_header2_t header = {};
  memcpy(&header, bytes.data(), std::min(form.header_bytes, sizeof header));
  if (form.is_swapped) SwapWords(header);
  return header;
}

bool IsLineTooLong(const cups_page_header2_t& header) {
  constexpr uint64_t kMostPixelBytes = 30;  // fifteen colours of 16 bits
  const uint64_t line_bytes = header.cupsBytesPerLine;
  const uint32_t pixel_bytes = header.cupsBitsPerPixel >> 3;
  const uint64_t pixels = pixel_bytes != 0 ? line_bytes / pixel_bytes : line_bytes;
  return pixels > kMostLinePixels || line_bytes > kMostPixelBytes * kMostLinePixels;
}

}  // namespace zr7700
