// The disc's page as it is being put together: rows of red, green and blue, 8 bits each, white at
// first.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DISC_CANVAS_H_
#define ZR7700_DISC_CANVAS_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace zr7700 {

// A part of the page, in dots from its left upper corner; it may reach beyond the page.
struct Place {
  int64_t left = 0;
  int64_t top = 0;
  int64_t width = 0;
  int64_t height = 0;

  bool operator==(const Place&) const = default;
};

// Not for use by two threads at once.
class Canvas {
 public:
  // A white page; nothing when there is no memory for it.
  static std::optional<Canvas> Create(uint32_t width_dots, uint32_t height_dots);

  uint32_t width() const { return width_; }
  uint32_t height() const { return height_; }

  // The three bytes of every dot of line `y` < height(). Owned by the canvas.
  std::span<uint8_t> Line(uint32_t y) { return {dots_.get() + y * LineBytes(), LineBytes()}; }
  std::span<const uint8_t> Line(uint32_t y) const {
    return {dots_.get() + y * LineBytes(), LineBytes()};
  }

  // White again.
  void Clear();

  bool IsWhite() const;

 private:
  Canvas(uint32_t width_dots, uint32_t height_dots, uint8_t* dots)
      : width_(width_dots), height_(height_dots), dots_(dots) {}

  size_t LineBytes() const { return size_t{width_} * 3; }

  uint32_t width_;
  uint32_t height_;
  std::unique_ptr<uint8_t[]> dots_;
};

}  // namespace zr7700

#endif  // ZR7700_DISC_CANVAS_H_
