// A raster stream of any bytes, put onto a small disc: whatever the pages say of themselves, what
// is drawn lies on the ring. SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

#include "fuzz/input.h"
#include "page_fitter/page_fitter.h"

namespace {

using zr7700::fuzz::Require;

constexpr uint32_t kSide_dots = 189;  // 80 mm at 60 dpi
constexpr int kMostPages = 3;

zr7700::TargetPage Disc(uint8_t ring) {
  zr7700::TargetPage target = {};
  target.header.cupsWidth = target.header.cupsHeight = kSide_dots;
  target.header.HWResolution[0] = target.header.HWResolution[1] = 60;
  target.header.cupsBytesPerLine = 3 * kSide_dots;
  target.grey = (ring & 1) != 0;
  target.margin_dots = ring >> 4;
  target.hole_radius_dots = ring >> 2;
  return target;
}

// The corners of the page are off any disc, and so is the middle of the hole.
void CheckRing(const zr7700::TargetPage& target, const zr7700::Canvas& canvas) {
  for (const uint32_t y : {0U, kSide_dots - 1}) {
    const auto line = canvas.Line(y);
    Require(std::all_of(line.begin(), line.end(), [](uint8_t byte) { return byte == 0xFF; }));
  }
  const auto middle = canvas.Line(kSide_dots / 2);
  if (target.hole_radius_dots > 2) Require(middle[3 * (kSide_dots / 2)] == 0xFF);
}

int MemoryFile(std::span<const uint8_t> bytes) {
  const int file = memfd_create("raster", MFD_CLOEXEC);
  Require(file >= 0 &&
          write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
  Require(lseek(file, 0, SEEK_SET) == 0);
  return file;
}

void FitPages(int file, const zr7700::TargetPage& target, uint8_t choices) {
  auto canvas = zr7700::Canvas::Create(kSide_dots, kSide_dots);
  const zr7700::Position position = {.horizontal = choices % 3 - 1,
                                     .vertical = choices / 3 % 3 - 1};
  zr7700::PageFitter fitter(target, static_cast<zr7700::Scaling>(choices / 9 % 5), position,
                            *canvas);
  zr7700::PageReader reader(file);
  cups_page_header2_t header;
  for (int page = 0; reader.IsRaster() && page < kMostPages; ++page) {
    if (reader.NextPage(header) != zr7700::RasterStream::Next::kPage) return;
    if (!fitter.Fit(reader, header).empty()) return;
    CheckRing(target, *canvas);
    Require(fitter.header().cupsWidth == kSide_dots && fitter.header().cupsHeight == kSide_dots);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  zr7700::fuzz::Input input(data, bytes);
  const uint8_t ring = input.U8();
  const uint8_t choices = input.U8();
  const int file = MemoryFile(input.Rest());
  FitPages(file, Disc(ring), choices);
  close(file);
  return 0;
}
