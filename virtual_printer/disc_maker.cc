// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/disc_maker.h"

#include <chrono>
#include <utility>

namespace zr7700::printer {

DiscReport MakeDisc(PrintedPage& page, const std::string& stem, int diameter_mm) {
  DiscReport disc;
  disc.spoilt = page.spoilt;
  disc.family = page.family;
  disc.start = page.start;
  disc.feed = page.feed;
  if (page.canvas.width == 0) return disc;
  page.canvas.Allocate();
  disc.drops = page.canvas.drops;
  disc.place = PlaceDisc(page, diameter_mm);
  disc.dots = MeasureDots(page, disc.place);
  const std::string picture = stem + ".png";
  const std::string small_picture = stem + "-small.png";
  if (!WritePng(DrawDots(page, disc.place), picture, disc.error)) return disc;
  disc.picture = picture;
  if (!WritePng(DrawDisc(page, disc.place), small_picture, disc.error)) return disc;
  disc.small_picture = small_picture;
  return disc;
}

void DiscMaker::Begin(PrintedPage&& page, std::string stem, int diameter_mm) {
  result_ = std::async(std::launch::async,
                       [page = std::move(page), stem = std::move(stem), diameter_mm]() mutable {
                         return MakeDisc(page, stem, diameter_mm);
                       });
}

std::optional<DiscReport> DiscMaker::TakeReady() {
  if (!Busy() || result_.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
    return std::nullopt;
  }
  return result_.get();
}

}  // namespace zr7700::printer
