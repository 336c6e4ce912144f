// One raster page onto the disc's page.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PAGE_FITTER_PAGE_FITTER_H_
#define ZR7700_PAGE_FITTER_PAGE_FITTER_H_

#include <cups/raster.h>

#include <cstdint>
#include <string>
#include <vector>

#include "disc/canvas.h"
#include "disc/placement.h"
#include "disc/target_page.h"
#include "page_fitter/page_reader.h"

namespace zr7700 {

// Not for use by two threads at once. The target and the canvas, which has its size, must outlive
// it.
class PageFitter {
 public:
  PageFitter(const TargetPage& target, Scaling scaling, Position position, Canvas& canvas)
      : target_(target), scaling_(scaling), position_(position), canvas_(canvas) {}

  // Reads the page whose header has just been read and puts it onto the canvas, white off the ring.
  // Empty, or a sentence for the person when the page cannot be printed; the canvas then holds
  // anything.
  std::string Fit(PageReader& reader, const cups_page_header2_t& header);

  // Of the newest page: the header to hand on (its own when it had the disc's size, resolution and
  // form), how many of its dots make an inch on the disc where they are fewest, and whether all
  // that is on it lies off the ring.
  const cups_page_header2_t& header() const { return header_; }
  double dots_an_inch() const { return dots_an_inch_; }
  bool misses_the_disc() const { return misses_the_disc_; }

 private:
  double DotsAnInch(unsigned dots, int64_t placed_dots, int axis) const;
  bool Draw(PageReader& reader, const cups_page_header2_t& header, const Place& place);
  bool FitsAlready(const cups_page_header2_t& header, const Place& place) const;

  const TargetPage& target_;
  const Scaling scaling_;
  const Position position_;
  Canvas& canvas_;
  cups_page_header2_t header_ = {};
  double dots_an_inch_ = 0;
  bool misses_the_disc_ = false;
  std::vector<uint8_t> line_;
  std::vector<uint8_t> rgb_;
};

}  // namespace zr7700

#endif  // ZR7700_PAGE_FITTER_PAGE_FITTER_H_
