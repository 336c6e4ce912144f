// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/page_settings.h"

#include <algorithm>

#include "reference_engine/engine_status.h"

namespace zr7700::reference_engine {
namespace {

// The only printer model of both families.
constexpr int kPrinter = 1;

struct QualityPasses {
  uint32_t quality;
  uint32_t passes;
};
constexpr QualityPasses kQualityPasses[] = {{2, 2}, {3, 4}, {4, 8}};

uint32_t PassesFor(uint32_t quality, const EngineIni& ini) {
  if (ini.passes > 0) return static_cast<uint32_t>(ini.passes);
  for (const QualityPasses& row : kQualityPasses)
    if (row.quality == quality) return row.passes;
  return 1;
}

bool IsPrintable(const Properties& properties) {
  return properties.dots_per_inch[0] != 0 &&
         properties.dots_per_inch[0] == properties.dots_per_inch[1] &&
         properties.printable_width > 0 && properties.printable_height > 0 &&
         properties.physical_width > 0 && properties.color_cartridge;
}

PrintDirection DirectionFor(const EngineIni& ini) {
  return ini.slot1_direction < 0 ? PrintDirection::kBoth
                                 : static_cast<PrintDirection>(ini.slot1_direction);
}

}  // namespace

int32_t PlanPage(Family family, const Properties& properties, const EngineIni& ini,
                 PageSettings* settings) {
  if (ini.printer.value_or(kPrinter) != kPrinter) return kBadConfiguration;
  if (!IsPrintable(properties)) return kBadGeometry;
  const int32_t begin = std::max(0, -properties.left_margin);
  const int32_t end =
      std::min(properties.printable_width, properties.physical_width - properties.left_margin);
  if (begin >= end) return kBadGeometry;

  const uint32_t passes = PassesFor(properties.quality, ini);
  const auto mixing = ini.color == 2 ? DropMixing::kPhoto : DropMixing::kStandard;
  // Item 6 is a signed byte.
  const auto lag = static_cast<int8_t>(properties.alignment[kReverseLagSlot]);
  *settings = {properties,
               {family, properties.media, mixing, passes},
               {family, passes, DirectionFor(ini), lag},
               static_cast<uint32_t>(begin),
               static_cast<uint32_t>(end)};
  return kOk;
}

}  // namespace zr7700::reference_engine
