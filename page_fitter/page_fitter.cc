// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "page_fitter/page_fitter.h"

#include <algorithm>

#include "disc/raster_header.h"
#include "disc/ring_mask.h"
#include "disc/scaler.h"
#include "page_fitter/page_check.h"
#include "page_fitter/page_layout.h"
#include "page_fitter/pixel_form.h"

namespace zr7700 {

std::string PageFitter::Fit(PageReader& reader, const cups_page_header2_t& header) {
  std::string complaint = CheckPage(header);
  if (!complaint.empty()) return complaint;
  const Place place = LayOut(header, target_, scaling_, position_);
  if (!Draw(reader, header, place)) {
    return "The page broke off before its end and is not printed; print the job again.";
  }
  const bool had_ink = !canvas_.IsWhite();
  WhitenOffTheRing(target_, canvas_);
  misses_the_disc_ = had_ink && canvas_.IsWhite();
  header_ = FitsAlready(header, place) ? header : target_.header;
  header_.NumCopies = 1;
  dots_an_inch_ = std::min(DotsAnInch(header.cupsWidth, place.width, 0),
                           DotsAnInch(header.cupsHeight, place.height, 1));
  return {};
}

double PageFitter::DotsAnInch(unsigned dots, int64_t placed_dots, int axis) const {
  return static_cast<double>(dots) * target_.header.HWResolution[axis] /
         static_cast<double>(placed_dots);
}

bool PageFitter::Draw(PageReader& reader, const cups_page_header2_t& header, const Place& place) {
  canvas_.Clear();
  line_.resize(header.cupsBytesPerLine);
  rgb_.resize(size_t{header.cupsWidth} * 3);
  Scaler scaler(header.cupsWidth, header.cupsHeight, place, canvas_);
  for (uint32_t y = 0; y < header.cupsHeight; ++y) {
    if (!reader.ReadLine(line_)) return false;
    ToRgb(PixelFormOf(header), line_, rgb_);
    if (target_.grey) ToGrey(rgb_);
    scaler.AddLine(rgb_);
  }
  return true;
}

bool PageFitter::FitsAlready(const cups_page_header2_t& header, const Place& place) const {
  const cups_page_header2_t& disc = target_.header;
  const Place all = {.width = disc.cupsWidth, .height = disc.cupsHeight};
  return place == all && header.cupsWidth == disc.cupsWidth &&
         header.cupsHeight == disc.cupsHeight && header.cupsBytesPerLine == disc.cupsBytesPerLine &&
         ColorSpaceOf(header) == CUPS_CSPACE_RGB;
}

}  // namespace zr7700
