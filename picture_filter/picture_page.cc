// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/picture_page.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "disc/scaler.h"

namespace zr7700 {
namespace {

constexpr unsigned kSharp_dpi = 300;

constexpr char kNoMemory[] = "There is no memory for the page; print again later.";

// As many dots as the place on the page has, of those that the picture has at most.
Dots EnoughFor(const Place& place, Dots picture) {
  return {.width = static_cast<uint32_t>(std::min<int64_t>(place.width, picture.width)),
          .height = static_cast<uint32_t>(std::min<int64_t>(place.height, picture.height))};
}

bool DrawLines(PictureReader& reader, const Place& place, Canvas& canvas) {
  if (!reader.Begin(EnoughFor(place, reader.picture().dots))) return false;
  const Dots dots = reader.decoded();
  std::vector<uint8_t> line(size_t{dots.width} * 3);
  Scaler scaler(dots.width, dots.height, place, canvas);
  for (uint32_t y = 0; y < dots.height; ++y) {
    if (!reader.ReadLine(line)) return false;
    scaler.AddLine(line);
  }
  return reader.End();
}

}  // namespace

std::optional<Canvas> DrawPicture(PictureReader& reader, const PictureLayout& layout,
                                  std::string& error) {
  error = kNoMemory;
  std::optional<Canvas> canvas = Canvas::Create(layout.page.width, layout.page.height);
  if (!canvas) return std::nullopt;
  if (!DrawLines(reader, layout.picture, *canvas)) {
    error = reader.error();
    return std::nullopt;
  }
  return layout.turn.IsNone() ? std::move(canvas) : Turned(layout.turn, *canvas);
}

std::string BlurWarning(const PictureLayout& layout, const TargetPage& target) {
  if (layout.dpi >= kBlurred_dpi) return {};
  const cups_page_header2_t& page = target.header;
  const unsigned width = page.cupsWidth * kSharp_dpi / page.HWResolution[0];
  const unsigned height = page.cupsHeight * kSharp_dpi / page.HWResolution[1];
  return "The picture has only " + std::to_string(static_cast<int>(layout.dpi)) +
         " dots an inch on the disc and will look blurred; " + std::to_string(width) + " x " +
         std::to_string(height) + " dots fill the disc sharply.";
}

}  // namespace zr7700
