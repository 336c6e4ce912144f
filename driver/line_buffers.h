// The two line buffers of a page.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DRIVER_LINE_BUFFERS_H_
#define ZR7700_DRIVER_LINE_BUFFERS_H_

#include <cups/raster.h>

#include <cstdint>
#include <memory>

namespace zr7700 {

// One raster line as read, 3 bytes a pixel, and the same line widened to 4. Owned by the page; main
// thread.
class LineBuffers {
 public:
  // Makes both for the page that `header` describes. False, with the reason in the log, when a line
  // is too long (disc/raster_header.h), a pixel would have less than a byte, or a buffer could not
  // be had.
  bool Allocate(const cups_page_header2_t& header);

  // `header`'s bytes per line, to be filled with the line as read.
  uint8_t* line() { return line_.get(); }

  // pixel_count() pixels: red, green, blue, 0.
  uint8_t* rgbm() { return rgbm_.get(); }

  uint32_t pixel_count() const { return pixel_count_; }

  // Widens the line into rgbm(). Bytes beyond the line's end count as 0.
  void Widen();

 private:
  // Given back with free().
  struct Free {
    void operator()(uint8_t* bytes) const;
  };

  std::unique_ptr<uint8_t, Free> line_;
  std::unique_ptr<uint8_t, Free> rgbm_;
  uint32_t pixel_count_ = 0;
};

}  // namespace zr7700

#endif  // ZR7700_DRIVER_LINE_BUFFERS_H_
