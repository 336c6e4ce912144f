// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/canvas.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace zr7700 {

std::optional<Canvas> Canvas::Create(uint32_t width_dots, uint32_t height_dots) {
  auto* const dots = new (std::nothrow) uint8_t[size_t{width_dots} * 3 * height_dots];
  if (dots == nullptr) return std::nullopt;
  Canvas canvas(width_dots, height_dots, dots);
  canvas.Clear();
  return canvas;
}

void Canvas::Clear() { std::memset(dots_.get(), 0xFF, LineBytes() * height_); }

bool Canvas::IsWhite() const {
  const std::span<const uint8_t> dots(dots_.get(), LineBytes() * height_);
  return std::all_of(dots.begin(), dots.end(), [](uint8_t byte) { return byte == 0xFF; });
}

}  // namespace zr7700
