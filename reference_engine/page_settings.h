// What a page is printed with: the properties as the host set them, and what follows from them.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_PAGE_SETTINGS_H_
#define ZR7700_REFERENCE_ENGINE_PAGE_SETTINGS_H_

#include <array>
#include <cstdint>

#include "reference_engine/engine_ini.h"
#include "reference_engine/family.h"
#include "reference_engine/screen.h"
#include "reference_engine/sweep.h"

namespace zr7700::reference_engine {

// The alignment items that the printer knows, in the order in which the stream carries them.
inline constexpr std::array<uint32_t, 8> kAlignmentItems = {0, 1, 2, 3, 6, 14, 7, 9};
// Where item 6, the lag of reverse passes, stands among them.
inline constexpr size_t kReverseLagSlot = 4;

// As set by the host; lengths in dots at the page's resolution, but the top margin in 1/600 inch,
// for it belongs to the seat of the disc. What was never set is 0 or the printer's usual value.
struct Properties {
  std::array<uint32_t, 2> dots_per_inch = {};
  int32_t left_margin = 0;
  int32_t top_margin = 0;
  int32_t printable_width = 0;
  int32_t printable_height = 0;
  int32_t physical_width = 0;
  uint32_t media = 1;
  uint32_t quality = 2;
  uint32_t tray = 2;
  uint32_t intent = 1;
  int32_t sharpening = 1;
  bool color_cartridge = true;
  std::array<uint32_t, kAlignmentItems.size()> alignment = {112, 112, 112, 112, 0, 0, 40, 40};
};

struct PageSettings {
  Properties properties;
  ScreenSettings screen;
  SweepSettings sweep;
  // The columns within the carriage's reach: visible_begin <= column < visible_end.
  uint32_t visible_begin = 0;
  uint32_t visible_end = 0;
};

// Works out a page from the properties and the ini file. Answers kOk, kBadConfiguration or
// kBadGeometry; on an error `settings` is unchanged.
int32_t PlanPage(Family family, const Properties& properties, const EngineIni& ini,
                 PageSettings* settings);

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_PAGE_SETTINGS_H_
