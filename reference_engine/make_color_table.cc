// Build tool: writes the colour table of one family and media as an ICC device link from sRGB to
// ink codes.
//   make_color_table heron|granite MEDIA exact|photo OUTPUT
// The table carries what it is for in its description and its profile ID, which engines check.
// "exact" aims at each colour as it is; "photo" scales all colours so that black is the inks' own
// black and shadows keep their steps.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <lcms2.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "reference_engine/color_table.h"
#include "reference_engine/ink_model.h"

namespace zr7700::reference_engine {
namespace {

constexpr uint32_t kNodes = 33;

struct TableRecipe {
  const InkSet* inks;
  bool scale_to_black;
};

LinearColor Target(const TableRecipe& recipe, const LinearColor& wanted) {
  if (!recipe.scale_to_black) return wanted;
  const LinearColor black = MixInks(*recipe.inks, {1, 1, 1});
  LinearColor target;
  for (size_t i = 0; i < target.size(); ++i) target[i] = black[i] + (1 - black[i]) * wanted[i];
  return target;
}

cmsInt32Number SampleNode(const cmsUInt16Number in[], cmsUInt16Number out[], void* cargo) {
  const TableRecipe& recipe = *static_cast<const TableRecipe*>(cargo);
  LinearColor wanted;
  for (size_t i = 0; i < wanted.size(); ++i) wanted[i] = DecodeSrgb(in[i] / 65535.0);
  const Coverages inks = SeparateInks(*recipe.inks, Target(recipe, wanted));
  for (size_t i = 0; i < inks.size(); ++i)
    out[i] = static_cast<cmsUInt16Number>(std::lround(CodeOfCoverage(inks[i]) * 257));
  return TRUE;
}

void AddDescription(cmsHPROFILE profile, const char* text) {
  cmsMLU* description = cmsMLUalloc(nullptr, 1);
  cmsMLUsetASCII(description, "en", "US", text);
  cmsWriteTag(profile, cmsSigProfileDescriptionTag, description);
  cmsMLUfree(description);
}

bool AddTable(cmsHPROFILE profile, TableRecipe recipe) {
  cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 3, kPlanes);
  cmsStage* grid = cmsStageAllocCLut16bit(nullptr, kNodes, 3, kPlanes, nullptr);
  bool done = cmsStageSampleCLut16bit(grid, SampleNode, &recipe, 0) != 0;
  // The format wants curves around its grid.
  done =
      done && cmsPipelineInsertStage(pipeline, cmsAT_BEGIN, grid) &&
      cmsPipelineInsertStage(pipeline, cmsAT_BEGIN, cmsStageAllocToneCurves(nullptr, 3, nullptr)) &&
      cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr)) &&
      cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
  cmsPipelineFree(pipeline);
  return done;
}

// The profile as it is saved, with one creation time for all: a table is the same whenever it is
// made.
std::string BytesWithFixedTime(cmsHPROFILE profile) {
  constexpr size_t kTimeOffset = 24;  // year, month, day, hours, minutes, seconds: 16 bits each
  constexpr char kNewYear[] = {2026 >> 8, static_cast<char>(2026 & 0xFF), 0, 1, 0, 1};
  cmsUInt32Number length_bytes = 0;
  if (!cmsSaveProfileToMem(profile, nullptr, &length_bytes)) return {};
  std::string bytes(length_bytes, '\0');
  if (!cmsSaveProfileToMem(profile, bytes.data(), &length_bytes)) return {};
  bytes.replace(kTimeOffset, 12, 12, '\0');
  bytes.replace(kTimeOffset, sizeof kNewYear, kNewYear, sizeof kNewYear);
  return bytes;
}

bool SaveWithFixedTime(cmsHPROFILE profile, const char* path) {
  const std::string bytes = BytesWithFixedTime(profile);
  cmsHPROFILE saved =
      cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
  if (saved == nullptr) return false;
  // The ID is that of what is saved next.
  const bool done = cmsMD5computeID(saved) && cmsSaveProfileToFile(saved, path);
  cmsCloseProfile(saved);
  return done;
}

bool WriteTable(const TableRecipe& recipe, const std::string& description, const char* path) {
  cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
  cmsSetProfileVersion(profile, 2.4);
  cmsSetDeviceClass(profile, cmsSigLinkClass);
  cmsSetColorSpace(profile, cmsSigRgbData);
  cmsSetPCS(profile, cmsSigCmyData);
  AddDescription(profile, description.c_str());
  const bool done = AddTable(profile, recipe) && SaveWithFixedTime(profile, path);
  cmsCloseProfile(profile);
  return done;
}

int Run(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: make_color_table heron|granite MEDIA exact|photo OUTPUT\n");
    return 2;
  }
  const Family family = std::strcmp(argv[1], "heron") == 0 ? Family::kHeron : Family::kGranite;
  const auto media = static_cast<uint32_t>(std::strtoul(argv[2], nullptr, 10));
  const bool photo = std::strcmp(argv[3], "photo") == 0;
  const std::string description = TableDescription(family) + ("media " + std::to_string(media)) +
                                  (photo ? ", photo" : ", exact") + ": sRGB to ink codes";
  if (WriteTable({&InksFor(family, media), photo}, description, argv[4])) return 0;
  std::fprintf(stderr, "make_color_table: cannot write %s\n", argv[4]);
  return 1;
}

}  // namespace
}  // namespace zr7700::reference_engine

int main(int argc, char** argv) { return zr7700::reference_engine::Run(argc, argv); }
