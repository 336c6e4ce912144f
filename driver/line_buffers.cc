// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/line_buffers.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "base/byte_order.h"
#include "base/log.h"
#include "base/out_of_memory.h"
#include "disc/raster_header.h"

namespace zr7700 {
namespace {

constexpr uint32_t kLineBytesPerPixel = 3;
constexpr uint32_t kRgbmBytesPerPixel = 4;

// Bytes behind the line that a 4-byte load of its last pixel may touch.
constexpr size_t kSlack = 1;

void LogRefusal(uint32_t size_bytes) {
  LogMessage(kLogDetail, "     Unable to allocate %u bytes!", size_bytes);
}

// `size_bytes` zeroed bytes and room for `capacity_bytes`; null, logged, when they cannot be had.
uint8_t* AllocateLine(uint32_t size_bytes, size_t capacity_bytes) {
  void* const bytes = calloc(capacity_bytes, 1);
  if (bytes == nullptr) {
    LogRefusal(size_bytes);
    ReportNoMemory();
  }
  return static_cast<uint8_t*>(bytes);
}

}  // namespace

void LineBuffers::Free::operator()(uint8_t* bytes) const { free(bytes); }

bool LineBuffers::Allocate(const cups_page_header2_t& header) {
  const uint32_t line_bytes = header.cupsBytesPerLine;
  if (IsLineTooLong(header)) {
    LogRefusal(line_bytes);
    return false;
  }
  const uint32_t bytes_per_pixel = header.cupsBitsPerPixel >> 3;
  pixel_count_ = bytes_per_pixel != 0 ? line_bytes / bytes_per_pixel : 0;
  const uint32_t rgbm_bytes = pixel_count_ * kRgbmBytesPerPixel;
  // Every pixel is read as 3 bytes, whatever its size: small pixels need a longer line.
  const uint32_t read_bytes = pixel_count_ * kLineBytesPerPixel;

  line_.reset(AllocateLine(line_bytes, std::max(line_bytes, read_bytes) + kSlack));
  if (line_ == nullptr) return false;
  void* const line_address = line_.get();
  LogMessage(kLogDetail, "     Allocated line buffer %u bytes at %p!", line_bytes, line_address);
  if (bytes_per_pixel == 0) {
    LogMessage(kLogDetail, "     Bad cupsBitsPerPixel=%u!", header.cupsBitsPerPixel);
    return false;
  }
  rgbm_.reset(AllocateLine(rgbm_bytes, rgbm_bytes + kSlack));
  if (rgbm_ == nullptr) return false;
  LogMessage(kLogDetail, "     Allocated rgbmline buffer %u bytes at %p!", rgbm_bytes,
             line_address);
  return true;
}

void LineBuffers::Widen() {
  const uint8_t* from = line_.get();
  uint8_t* to = rgbm_.get();
  for (uint32_t i = 0; i < pixel_count_; ++i) {
    // One load and one store a pixel; the fourth byte, the next pixel's, is masked away.
    constexpr uint32_t kColors = HostByteOrder() == kLittleEndianHost ? 0x00FFFFFFU : 0xFFFFFF00U;
    uint32_t pixel;
    memcpy(&pixel, from, sizeof pixel);
    pixel &= kColors;
    memcpy(to, &pixel, sizeof pixel);
    from += kLineBytesPerPixel;
    to += kRgbmBytesPerPixel;
  }
}

}  // namespace zr7700
