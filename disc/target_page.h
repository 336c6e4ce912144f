// The disc's page that a job asks for: its raster header, and the ring that may be printed on.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DISC_TARGET_PAGE_H_
#define ZR7700_DISC_TARGET_PAGE_H_

#include <cups/cups.h>
#include <cups/raster.h>

#include <optional>
#include <string>

#include "disc/placement.h"

namespace zr7700 {

// With fewer dots to an inch of the disc a picture looks blurred.
constexpr double kBlurred_dpi = 150;

struct TargetPage {
  // Chunky red, green and blue of 8 bits, whatever colours the job asks for: the only form that the
  // production filter prints. cupsWidth x cupsHeight dots at HWResolution.
  cups_page_header2_t header;
  bool grey = false;  // the job asks for greys only
  // What stays white: as wide as the choices' names say, or as the filter makes it when that is
  // more.
  uint32_t margin_dots = 0;  // at every edge
  uint32_t hole_radius_dots = 0;
  // The filter takes the numbers of hole and margin as they are, and those for one resolution come
  // out half or twice as wide in the other.
  bool ring_is_for_other_resolution = false;

  // The page's size in points, 1/72 inch.
  Size Points() const;
};

// The page that the PPD of the environment variable "PPD" and the job's options ask for. Nothing,
// with one sentence in `error`, when the PPD cannot be read, its page is none, or its hole does not
// fit between its margins. Main thread (libcups keeps the PPD library's last error for it).
std::optional<TargetPage> ReadTargetPage(int option_count, cups_option_t* options,
                                         std::string& error);

}  // namespace zr7700

#endif  // ZR7700_DISC_TARGET_PAGE_H_
