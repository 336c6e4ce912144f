// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/line_buffers.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "base/byte_order.h"
#include "base/log.h"

namespace zr7700 {
namespace {

constexpr uint64_t kMostBytes = uint64_t{64} << 20;
constexpr uint32_t kLineBytesPerPixel = 3;
constexpr uint32_t kRgbmBytesPerPixel = 4;

// Bytes behind the line that a 4-byte load of its last pixel may touch.
constexpr uint64_t kSlack = 1;

// `size_bytes` zeroed bytes and room for `capacity_bytes`; null, logged, when they are too many or
// cannot be had.
uint8_t* AllocateLine(uint64_t size_bytes, uint64_t capacity_bytes) {
  void* bytes = nullptr;
  const uint64_t room_bytes = std::max(size_bytes, capacity_bytes);
  if (size_bytes <= kMostBytes && std::in_range<size_t>(room_bytes)) {
    bytes = calloc(static_cast<size_t>(room_bytes), 1);
  }
  if (bytes == nullptr) {
    LogMessage(kLogDetail, "     Unable to allocate %u bytes!", static_cast<uint32_t>(size_bytes));
  }
  return static_cast<uint8_t*>(bytes);
}

}  // namespace

void LineBuffers::Free::operator()(uint8_t* bytes) const { free(bytes); }

bool LineBuffers::Allocate(const cups_page_header2_t& header) {
  const uint32_t line_bytes = header.cupsBytesPerLine;
  const uint32_t bytes_per_pixel = header.cupsBitsPerPixel >> 3;
  pixel_count_ = bytes_per_pixel != 0 ? line_bytes / bytes_per_pixel : 0;
  const uint64_t rgbm_bytes = uint64_t{pixel_count_} * kRgbmBytesPerPixel;
  // Every pixel is read as 3 bytes, whatever its size: small pixels need a longer line.
  const uint64_t read_bytes = std::min(uint64_t{pixel_count_} * kLineBytesPerPixel, kMostBytes);

  line_.reset(AllocateLine(line_bytes, std::max<uint64_t>(line_bytes, read_bytes) + kSlack));
  if (line_ == nullptr) return false;
  void* const line_address = line_.get();
  LogMessage(kLogDetail, "     Allocated line buffer %u bytes at %p!", line_bytes, line_address);
  if (bytes_per_pixel == 0) {
    LogMessage(kLogDetail, "     Bad cupsBitsPerPixel=%u!", header.cupsBitsPerPixel);
    return false;
  }
  rgbm_.reset(AllocateLine(rgbm_bytes, rgbm_bytes + kSlack));
  if (rgbm_ == nullptr) return false;
  LogMessage(kLogDetail, "     Allocated rgbmline buffer %u bytes at %p!",
             static_cast<uint32_t>(rgbm_bytes), line_address);
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
