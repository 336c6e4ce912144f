// The engine's 22 entries as the filter calls them: one guarded wrapper each.
//
// A wrapper tests its slot at every call. While the slot is null it calls nothing and answers
// HPE_ENTRY_MISSING (2), or the null handle for CreateHostPrintEngine; otherwise it passes its
// arguments and the entry's result on unchanged. host_print_engine.h says what each entry does.
// Main thread.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_ENGINE_ENTRIES_H_
#define ZR7700_ENGINE_ENGINE_ENTRIES_H_

#include <cstdint>

#include "zr7700/host_print_engine.h"

namespace zr7700 {

// One slot per entry, named after it; all null until a library has been searched.
struct EngineEntryTable {
#define ZR7700_SLOT(name, type) type name = nullptr;
  HPE_ENTRIES(ZR7700_SLOT)
#undef ZR7700_SLOT
};

// Filled by ResolveEngineEntries, constant afterwards.
extern EngineEntryTable engine_entries;

namespace hpe {

HPEHandle CreateHostPrintEngine();
int32_t HPEInitialize(HPEHandle engine, const char* path1, const char* path2, const char* path3,
                      const char* path4);
// The two zeros and the code that the entry wants are filled in here.
int32_t HPEStartDoc(HPEHandle engine, HPEOutputCallback output, const char* color_table_path,
                    void* context);
int32_t HPEStartPage(HPEHandle engine);
int32_t HPESendBand(HPEHandle engine, uint32_t y, uint32_t raster_count, uint32_t pixels_per_raster,
                    uint32_t bytes_per_raster, const void* data);
int32_t HPEEndPage(HPEHandle engine);
int32_t HPEEndDoc(HPEHandle engine);
void DestroyHostPrintEngine(HPEHandle engine);

int32_t SetInputResolution(HPEHandle engine, uint32_t axis, uint32_t dots_per_inch);
int32_t SetLeftMargin(HPEHandle engine, int32_t dots);
int32_t SetTopMargin(HPEHandle engine, int32_t dots);
int32_t SetPrintableWidth(HPEHandle engine, int32_t dots);
int32_t SetPrintableHeight(HPEHandle engine, int32_t dots);
int32_t SetPhysicalWidth(HPEHandle engine, int32_t dots);
int32_t SetInstalledCartridge(HPEHandle engine, uint32_t slot, uint32_t kind, uint32_t installed);
int32_t SetHPERasterFormat(HPEHandle engine, uint32_t format_code);
int32_t SetAlignmentInformation(HPEHandle engine, uint32_t item, uint32_t value);
int32_t SetPageIntent(HPEHandle engine, int32_t intent_code);
int32_t SetMediaType(HPEHandle engine, uint32_t media_code);
int32_t SetOutputPrintQuality(HPEHandle engine, uint32_t quality_code);
int32_t SetPaperTray(HPEHandle engine, int32_t tray);
int32_t SetImageSharpeningLevel(HPEHandle engine, int32_t level);

}  // namespace hpe
}  // namespace zr7700

#endif  // ZR7700_ENGINE_ENGINE_ENTRIES_H_
