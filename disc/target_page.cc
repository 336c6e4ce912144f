// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/target_page.h"

#include <cups/ppd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "disc/ring.h"

namespace zr7700 {
namespace {

constexpr unsigned kMostDots = 5100;  // of a disc's diameter, in the filter's clip table
constexpr double kPointsPerInch = 72;

// A length among the PPD's choices: the number that the keyword begins with, which is all that the
// filter reads, and the length that its name promises: keywords for 300 dpi end in "Draft" and hold
// half of it.
struct Length {
  int32_t number = 0;
  int32_t tenths_mm = 0;
};

Length MarkedLength(ppd_file_t* ppd, const char* option) {
  const ppd_choice_t* const choice = ppdFindMarkedChoice(ppd, option);
  if (choice == nullptr) return {};
  char* rest = nullptr;
  const auto number = static_cast<int32_t>(strtol(choice->choice, &rest, 10));
  return {.number = number,
          .tenths_mm = std::strcmp(rest, "Draft") == 0 ? 2 * std::min(number, 10000) : number};
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

// Every disc's page is a square.
bool IsPage(const cups_page_header2_t& header) {
  return header.cupsWidth > 0 && header.cupsWidth <= kMostDots &&
         header.cupsHeight == header.cupsWidth && header.HWResolution[0] > 0 &&
         header.HWResolution[1] == header.HWResolution[0];
}

uint32_t AtLeastNone(int32_t dots) { return static_cast<uint32_t>(std::max(0, dots)); }

// The filter counts 600 dots to the inch, whatever the page's resolution is.
bool ReadRing(ppd_file_t* ppd, TargetPage& page) {
  constexpr uint32_t kFilters_dpi = 600;
  const uint32_t dpi = page.header.HWResolution[0];
  const Length margin = MarkedLength(ppd, "OuterMargin");
  const Length hole = MarkedLength(ppd, "InnerDiameter");
  const uint32_t filters_margin = AtLeastNone(MarginDots(margin.number));
  const uint32_t filters_hole = HoleRadiusDots(static_cast<uint32_t>(hole.number));
  const uint32_t named_margin = AtLeastNone(MarginDots(margin.tenths_mm)) * dpi / kFilters_dpi;
  const uint32_t named_hole =
      HoleRadiusDots(static_cast<uint32_t>(hole.tenths_mm)) * dpi / kFilters_dpi;
  page.margin_dots = std::max(filters_margin, named_margin);
  page.hole_radius_dots = std::max(filters_hole, named_hole);
  page.ring_is_for_other_resolution =
      filters_hole > named_hole + 1 || filters_margin > named_margin + 1 ||
      named_hole > filters_hole + 1 || named_margin > filters_margin + 1;
  return uint64_t{2} * page.margin_dots + uint64_t{2} * page.hole_radius_dots <=
         page.header.cupsWidth;
}

// Null when it cannot be read. It stays open until the process ends: libcups does not give back all
// that it keeps of a PPD, and what is within reach is no leak.
ppd_file_t* OpenPpd() {
  static auto* const opened = new std::vector<ppd_file_t*>;
  const char* const path = std::getenv("PPD");
  ppd_file_t* const ppd = path == nullptr ? nullptr : ppdOpenFile(path);
  if (ppd != nullptr) opened->push_back(ppd);
  return ppd;
}

}  // namespace

Size TargetPage::Points() const {
  return {.width = header.cupsWidth * kPointsPerInch / header.HWResolution[0],
          .height = header.cupsHeight * kPointsPerInch / header.HWResolution[1]};
}

std::optional<TargetPage> ReadTargetPage(int option_count, cups_option_t* options,
                                         std::string& error) {
  ppd_file_t* const ppd = OpenPpd();
  if (ppd == nullptr) {
    error = "The printer's description (PPD) cannot be read; remove the queue and add it again.";
    return std::nullopt;
  }
  ppdMarkDefaults(ppd);
  cupsMarkOptions(ppd, option_count, options);
  TargetPage page = {};
  if (cupsRasterInterpretPPD(&page.header, ppd, option_count, options, nullptr) != 0 ||
      !IsPage(page.header)) {
    error =
        "The printer's description (PPD) is not that of a ZR7700; remove the queue and add it "
        "again.";
    return std::nullopt;
  }
  page.grey = IsGrey(page.header);
  MakeChunkyRgb(page.header);
  if (!ReadRing(ppd, page)) {
    error =
        "The hole and the margin that were chosen leave nothing of the disc; choose a smaller "
        "InnerDiameter or OuterMargin.";
    return std::nullopt;
  }
  return page;
}

}  // namespace zr7700
