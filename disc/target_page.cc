// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/target_page.h"

#include <cups/ppd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "disc/ring.h"

namespace zr7700 {
namespace {

constexpr unsigned kMostDots = 5100;  // of a disc's diameter, in the filter's clip table
constexpr double kPointsPerInch = 72;

using Ppd = std::unique_ptr<ppd_file_t, decltype(&ppdClose)>;

// The number that the marked choice's keyword begins with; 0 without either.
int32_t MarkedNumber(ppd_file_t* ppd, const char* option) {
  const ppd_choice_t* const choice = ppdFindMarkedChoice(ppd, option);
  return choice == nullptr ? 0 : static_cast<int32_t>(strtol(choice->choice, nullptr, 10));
}

bool IsGrey(const cups_page_header2_t& header) {
  return header.cupsColorSpace == CUPS_CSPACE_W || header.cupsColorSpace == CUPS_CSPACE_SW;
}

void MakeChunkyRgb(cups_page_header2_t& header) {
  header.cupsColorSpace = CUPS_CSPACE_RGB;
  header.cupsColorOrder = CUPS_ORDER_CHUNKED;
  header.cupsBitsPerColor = 8;
  header.cupsBitsPerPixel = 24;
  header.cupsNumColors = 3;
  header.cupsBytesPerLine = header.cupsWidth * 3;
  header.NumCopies = 1;
}

bool IsPage(const cups_page_header2_t& header) {
  return header.cupsWidth > 0 && header.cupsWidth <= kMostDots && header.cupsHeight > 0 &&
         header.cupsHeight <= kMostDots && header.HWResolution[0] > 0 && header.HWResolution[1] > 0;
}

// The filter measures both in dots at 600 dpi, whatever the page's resolution is.
bool ReadRing(ppd_file_t* ppd, TargetPage& page) {
  const uint32_t smaller = std::min(page.header.cupsWidth, page.header.cupsHeight);
  page.margin_dots =
      static_cast<uint32_t>(std::max(0, MarginDots(MarkedNumber(ppd, "OuterMargin"))));
  page.hole_radius_dots = HoleRadiusDots(static_cast<uint32_t>(MarkedNumber(ppd, "InnerDiameter")));
  return uint64_t{2} * page.margin_dots + uint64_t{2} * page.hole_radius_dots <= smaller;
}

Ppd OpenPpd() {
  const char* const path = std::getenv("PPD");
  return {path == nullptr ? nullptr : ppdOpenFile(path), &ppdClose};
}

}  // namespace

Size TargetPage::Points() const {
  return {.width = header.cupsWidth * kPointsPerInch / header.HWResolution[0],
          .height = header.cupsHeight * kPointsPerInch / header.HWResolution[1]};
}

std::optional<TargetPage> ReadTargetPage(int option_count, cups_option_t* options,
                                         std::string& error) {
  const Ppd ppd = OpenPpd();
  if (ppd == nullptr) {
    error = "The printer's description (PPD) cannot be read; remove the queue and add it again.";
    return std::nullopt;
  }
  ppdMarkDefaults(ppd.get());
  cupsMarkOptions(ppd.get(), option_count, options);
  TargetPage page = {};
  if (cupsRasterInterpretPPD(&page.header, ppd.get(), option_count, options, nullptr) != 0 ||
      !IsPage(page.header)) {
    error =
        "The printer's description (PPD) is not that of a ZR7700; remove the queue and add it "
        "again.";
    return std::nullopt;
  }
  page.grey = IsGrey(page.header);
  MakeChunkyRgb(page.header);
  if (!ReadRing(ppd.get(), page)) {
    error =
        "The hole and the margin that were chosen leave nothing of the disc; choose a smaller "
        "InnerDiameter or OuterMargin.";
    return std::nullopt;
  }
  return page;
}

}  // namespace zr7700
