// A raster stream of any bytes, read and widened as the page loop does it: every pixel is its
// line's own three bytes, or 0 beyond the line's end.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cups/raster.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

#include "disc/raster_stream.h"
#include "driver/line_buffers.h"
#include "fuzz/input.h"

namespace {

using zr7700::fuzz::Require;
using Next = zr7700::RasterStream::Next;

constexpr unsigned kMostPages = 3;
constexpr unsigned kMostLines = 20;
constexpr uint32_t kMostBytes = 1 << 20;  // a line that is worth the time

ssize_t ReadInput(void* context, unsigned char* buffer, size_t bytes) {
  auto& left = *static_cast<std::span<const uint8_t>*>(context);
  const size_t count = std::min(bytes, left.size());
  if (count != 0) memcpy(buffer, left.data(), count);
  left = left.subspan(count);
  return static_cast<ssize_t>(count);
}

void CheckPixels(zr7700::LineBuffers& buffers, uint32_t line_bytes) {
  for (uint32_t i = 0; i < buffers.pixel_count(); ++i) {
    for (uint32_t color = 0; color < 3; ++color) {
      const uint32_t from = 3 * i + color;
      const int expected = from < line_bytes ? buffers.line()[from] : 0;
      Require(buffers.rgbm()[4 * i + color] == expected);
    }
    Require(buffers.rgbm()[4 * i + 3] == 0);
  }
}

void ReadPage(zr7700::RasterStream& raster, const cups_page_header2_t& header) {
  zr7700::LineBuffers buffers;
  if (!buffers.Allocate(header)) return;
  if (header.cupsBytesPerLine > kMostBytes) return;
  const unsigned lines = std::min(header.cupsHeight, kMostLines);
  for (unsigned y = 0; y < lines; ++y) {
    if (!raster.ReadPixels({buffers.line(), header.cupsBytesPerLine})) return;
    buffers.Widen();
    CheckPixels(buffers, header.cupsBytesPerLine);
  }
}

// Headers that CUPS itself would refuse reach the buffers as well.
void AllocateFor(uint32_t bytes_per_line, uint32_t bits_per_pixel) {
  cups_page_header2_t header = {};
  header.cupsBytesPerLine = bytes_per_line;
  header.cupsBitsPerPixel = bits_per_pixel;
  zr7700::LineBuffers buffers;
  if (!buffers.Allocate(header) || bytes_per_line > kMostBytes) return;
  memset(buffers.line(), 0x5A, bytes_per_line);
  buffers.Widen();
  CheckPixels(buffers, bytes_per_line);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  zr7700::fuzz::Input input(data, bytes);
  const uint32_t bytes_per_line = input.U32();
  AllocateFor(bytes_per_line >> (bytes_per_line & 31), input.U8());
  std::span<const uint8_t> left = input.Rest();
  zr7700::RasterStream raster(ReadInput, &left);
  cups_page_header2_t header;
  for (unsigned page = 0; page < kMostPages; ++page) {
    const Next next = raster.NextPage(header);
    Require((next == Next::kTooLong) == (next <= Next::kTooLong && zr7700::IsLineTooLong(header)));
    if (next != Next::kPage) break;
    ReadPage(raster, header);
  }
  return 0;
}
