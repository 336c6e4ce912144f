// Whether a raster page can be put onto a disc at all.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PAGE_FITTER_PAGE_CHECK_H_
#define ZR7700_PAGE_FITTER_PAGE_CHECK_H_

#include <cups/raster.h>

#include <string>

namespace zr7700 {

// Empty for a page that can be printed, else a sentence for the person: what is wrong with it and
// what to do. After an empty answer the header's sizes are safe to compute with: 1 to 131,072 dots
// across, at most 300 million in all, lines that hold their dots. Any thread.
std::string CheckPage(const cups_page_header2_t& header);

}  // namespace zr7700

#endif  // ZR7700_PAGE_FITTER_PAGE_CHECK_H_
