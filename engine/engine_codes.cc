// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/engine_codes.h"

#include <span>

namespace zr7700 {
namespace {

struct CodeRow {
  uint8_t choice;
  EngineCode code;
};

// The last row of each table serves every choice that has no row of its own. Quick and normal
// quality are one code to the engine.
constexpr CodeRow kHeronQuality[] = {
    {1, {2, "     Resolution set to PQ_Quick"}},
    {2, {2, "     Resolution set to PQ_Normal"}},
    {3, {4, "     Resolution mapped to PQ_BEST"}},
    {4, {4, "     Resolution set to PQ_BEST"}},
};
constexpr CodeRow kGraniteQuality[] = {
    {1, {2, "     Resolution set to PQ_Quick"}},
    {2, {2, "     Resolution set to PQ_Normal"}},
    {3, {3, "     Resolution set to PQ_BETTER"}},
    {4, {4, "     Resolution set to PQ_BEST"}},
};
constexpr CodeRow kHeronMedia[] = {
    {1, {1, "     Media set to MT_PLAIN"}},
    {2, {1, "     Media mapped to MT_PLAIN"}},
};
constexpr CodeRow kGraniteMedia[] = {
    {1, {1, "     Media set to MT_PLAIN"}},   {3, {7, "     Media set to MT_GLOSSY1"}},
    {4, {8, "     Media set to MT_GLOSSY2"}}, {5, {9, "     Media set to MT_GLOSSY3"}},
    {2, {2, "     Media set to MT_COATED"}},
};

EngineCode Find(std::span<const CodeRow> rows, uint8_t choice) {
  for (const CodeRow& row : rows) {
    if (row.choice == choice) return row.code;
  }
  return rows.back().code;
}

}  // namespace

EngineCode QualityCode(bool is_heron, uint8_t print_quality) {
  return is_heron ? Find(kHeronQuality, print_quality) : Find(kGraniteQuality, print_quality);
}

EngineCode MediaCode(bool is_heron, uint8_t disc_surface_quality) {
  return is_heron ? Find(kHeronMedia, disc_surface_quality)
                  : Find(kGraniteMedia, disc_surface_quality);
}

}  // namespace zr7700
