// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/engine_entries.h"

namespace zr7700 {

EngineEntryTable engine_entries;

namespace hpe {
namespace {

template <typename Entry, typename... Arguments>
int32_t Status(Entry entry, Arguments... arguments) {
  return entry != nullptr ? entry(arguments...) : HPE_ENTRY_MISSING;
}

}  // namespace

HPEHandle CreateHostPrintEngine() {
  return engine_entries.CreateHostPrintEngine != nullptr ? engine_entries.CreateHostPrintEngine()
                                                         : nullptr;
}

int32_t HPEInitialize(HPEHandle engine, const char* path1, const char* path2, const char* path3,
                      const char* path4) {
  return Status(engine_entries.HPEInitialize, engine, path1, path2, path3, path4);
}

int32_t HPEStartDoc(HPEHandle engine, HPEOutputCallback output, const char* color_table_path,
                    void* context) {
  return Status(engine_entries.HPEStartDoc, engine, output, color_table_path, 0U, 0U,
                HPE_START_DOC_CODE, context);
}

int32_t HPEStartPage(HPEHandle engine) { return Status(engine_entries.HPEStartPage, engine); }

int32_t HPESendBand(HPEHandle engine, uint32_t y, uint32_t raster_count, uint32_t pixels_per_raster,
                    uint32_t bytes_per_raster, const void* data) {
  return Status(engine_entries.HPESendBand, engine, 0U, y, raster_count, pixels_per_raster,
                bytes_per_raster, data);
}

int32_t HPEEndPage(HPEHandle engine) { return Status(engine_entries.HPEEndPage, engine, 0U); }

int32_t HPEEndDoc(HPEHandle engine) { return Status(engine_entries.HPEEndDoc, engine, 0U); }

void DestroyHostPrintEngine(HPEHandle engine) {
  if (engine_entries.DestroyHostPrintEngine != nullptr) {
    engine_entries.DestroyHostPrintEngine(engine);
  }
}

int32_t SetInputResolution(HPEHandle engine, uint32_t axis, uint32_t dots_per_inch) {
  return Status(engine_entries.SetInputResolution, engine, axis, dots_per_inch);
}

int32_t SetLeftMargin(HPEHandle engine, int32_t dots) {
  return Status(engine_entries.SetLeftMargin, engine, dots);
}

int32_t SetTopMargin(HPEHandle engine, int32_t dots) {
  return Status(engine_entries.SetTopMargin, engine, dots);
}

int32_t SetPrintableWidth(HPEHandle engine, int32_t dots) {
  return Status(engine_entries.SetPrintableWidth, engine, dots);
}

int32_t SetPrintableHeight(HPEHandle engine, int32_t dots) {
  return Status(engine_entries.SetPrintableHeight, engine, dots);
}

int32_t SetPhysicalWidth(HPEHandle engine, int32_t dots) {
  return Status(engine_entries.SetPhysicalWidth, engine, dots);
}

int32_t SetInstalledCartridge(HPEHandle engine, uint32_t slot, uint32_t kind, uint32_t installed) {
  return Status(engine_entries.SetInstalledCartridge, engine, slot, kind, installed);
}

int32_t SetHPERasterFormat(HPEHandle engine, uint32_t format_code) {
  return Status(engine_entries.SetHPERasterFormat, engine, format_code);
}

int32_t SetAlignmentInformation(HPEHandle engine, uint32_t item, uint32_t value) {
  return Status(engine_entries.SetAlignmentInformation, engine, item, value);
}

int32_t SetPageIntent(HPEHandle engine, int32_t intent_code) {
  return Status(engine_entries.SetPageIntent, engine, intent_code);
}

int32_t SetMediaType(HPEHandle engine, uint32_t media_code) {
  return Status(engine_entries.SetMediaType, engine, media_code);
}

int32_t SetOutputPrintQuality(HPEHandle engine, uint32_t quality_code) {
  return Status(engine_entries.SetOutputPrintQuality, engine, quality_code);
}

int32_t SetPaperTray(HPEHandle engine, int32_t tray) {
  return Status(engine_entries.SetPaperTray, engine, tray);
}

int32_t SetImageSharpeningLevel(HPEHandle engine, int32_t level) {
  return Status(engine_entries.SetImageSharpeningLevel, engine, level);
}

}  // namespace hpe
}  // namespace zr7700
