// The 22 entries with C linkage. Compiled once a family, with ZR7700_ENGINE_FAMILY its letter.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <new>
#include <type_traits>

#include "reference_engine/instances.h"
#include "zr7700/host_print_engine.h"

using zr7700::reference_engine::Band;
using zr7700::reference_engine::Family;
using zr7700::reference_engine::PrintEngine;

namespace {

namespace engine = zr7700::reference_engine;

constexpr auto kFamily = static_cast<Family>(ZR7700_ENGINE_FAMILY);

// Runs one method of the handle's instance. Nothing may be thrown into the host: the engine's own
// code throws only for a lack of memory, all else comes out of the host's callback.
template <typename... Parameters, typename... Arguments>
int32_t Call(HPEHandle handle, int32_t (PrintEngine::*method)(Parameters...),
             Arguments... arguments) {
  const engine::Hold hold(handle);
  if (hold.status() != HPE_OK) return hold.status();
  try {
    return (hold.engine().*method)(arguments...);
  } catch (const std::bad_alloc&) {
    hold.engine().SpoilPage();
    return engine::kNoMemory;
  } catch (...) {
    hold.engine().SpoilPage();
    return engine::kCallbackFailed;
  }
}

}  // namespace

extern "C" {

HPEHandle CreateHostPrintEngine(void) { return engine::MakeInstance(kFamily); }

int32_t HPEInitialize(HPEHandle handle, const char* path1, const char* path2, const char* path3,
                      const char* path4) {
  return Call(handle, &PrintEngine::Initialize, path1, path2, path3, path4);
}

int32_t HPEStartDoc(HPEHandle handle, HPEOutputCallback output, const char* color_table_path,
                    uint32_t zero1, uint32_t zero2, uint32_t code, void* context) {
  return Call(handle, &PrintEngine::StartDocument, output, color_table_path, zero1 | zero2, code,
              context);
}

int32_t HPEStartPage(HPEHandle handle) { return Call(handle, &PrintEngine::StartPage); }

int32_t HPESendBand(HPEHandle handle, uint32_t zero, uint32_t y, uint32_t raster_count,
                    uint32_t pixels_per_raster, uint32_t bytes_per_raster, const void* data) {
  const Band band = {y, raster_count, pixels_per_raster, bytes_per_raster, data};
  return Call(handle, &PrintEngine::SendBand, zero, band);
}

int32_t HPEEndPage(HPEHandle handle, uint32_t zero) {
  return Call(handle, &PrintEngine::EndPage, zero);
}

int32_t HPEEndDoc(HPEHandle handle, uint32_t zero) {
  return Call(handle, &PrintEngine::EndDocument, zero);
}

void DestroyHostPrintEngine(HPEHandle handle) { engine::DropInstance(handle); }

int32_t SetInputResolution(HPEHandle handle, uint32_t axis, uint32_t dots_per_inch) {
  return Call(handle, &PrintEngine::SetResolution, axis, dots_per_inch);
}

int32_t SetLeftMargin(HPEHandle handle, int32_t value) {
  return Call(handle, &PrintEngine::SetLeftMargin, value);
}

int32_t SetTopMargin(HPEHandle handle, int32_t value) {
  return Call(handle, &PrintEngine::SetTopMargin, value);
}

int32_t SetPrintableWidth(HPEHandle handle, int32_t value) {
  return Call(handle, &PrintEngine::SetPrintableWidth, value);
}

int32_t SetPrintableHeight(HPEHandle handle, int32_t value) {
  return Call(handle, &PrintEngine::SetPrintableHeight, value);
}

int32_t SetPhysicalWidth(HPEHandle handle, int32_t value) {
  return Call(handle, &PrintEngine::SetPhysicalWidth, value);
}

int32_t SetInstalledCartridge(HPEHandle handle, uint32_t slot, uint32_t kind, uint32_t installed) {
  return Call(handle, &PrintEngine::SetCartridge, slot, kind, installed);
}

int32_t SetHPERasterFormat(HPEHandle handle, uint32_t code) {
  return Call(handle, &PrintEngine::SetRasterFormat, code);
}

int32_t SetAlignmentInformation(HPEHandle handle, uint32_t item, uint32_t value) {
  return Call(handle, &PrintEngine::SetAlignment, item, value);
}

int32_t SetPageIntent(HPEHandle handle, int32_t value) {
  return Call(handle, &PrintEngine::SetIntent, value);
}

int32_t SetMediaType(HPEHandle handle, uint32_t code) {
  return Call(handle, &PrintEngine::SetMedia, code);
}

int32_t SetOutputPrintQuality(HPEHandle handle, uint32_t code) {
  return Call(handle, &PrintEngine::SetQuality, code);
}

int32_t SetPaperTray(HPEHandle handle, int32_t value) {
  return Call(handle, &PrintEngine::SetTray, value);
}

int32_t SetImageSharpeningLevel(HPEHandle handle, int32_t value) {
  return Call(handle, &PrintEngine::SetSharpening, value);
}

}  // extern "C"

// The header declares the types of the entries only; a mistake above must not reach a host.
// NOLINTNEXTLINE(bugprone-macro-parentheses): a type takes none
#define ZR7700_CHECK_ENTRY(name, type) static_assert(std::is_same_v<decltype(&name), type>);
HPE_ENTRIES(ZR7700_CHECK_ENTRY)
#undef ZR7700_CHECK_ENTRY
