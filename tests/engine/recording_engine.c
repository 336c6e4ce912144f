/* A host print engine that renders nothing: it writes down every call with all its arguments, keeps
 * the bands' bytes, and answers as its script says.
 *
 * Environment: ZR7700_ENGINE_TRACE (trace.h), ZR7700_ENGINE_SCRIPT (script.h) and
 * ZR7700_ENGINE_PIXELS, the file that the bands' bytes are appended to.
 *
 * In the trace H is the handle that CreateHostPrintEngine gave, CB the output callback and CTX its
 * context; a pointer that is null says NULL. A line begins with "!" when the call did not come on
 * the process's first thread.
 *
 * A library that lacks an entry is built by renaming it: -DSetPaperTray=NoSuchEntry.
 *
 * SPDX-FileCopyrightText: The rastertoZR7700 authors
 * SPDX-License-Identifier: Apache-2.0 */
#include <stdint.h>
#include <stdio.h>
#include <unistd.h>

#include "script.h"
#include "trace.h"
#include "zr7700/host_print_engine.h"

#define EXPORTED __attribute__((visibility("default")))

enum { kShownBytes = 64 };

static int instance;
static HPEOutputCallback output;
static void* output_context;

static const char* Thread(void) { return gettid() == getpid() ? "" : "! "; }

static const char* Handle(HPEHandle handle) {
  if (handle == NULL) return "NULL";
  return handle == (HPEHandle)&instance ? "H" : "FOREIGN";
}

static void HandToCallback(uint8_t* block, uint32_t length_bytes) {
  if (output == NULL) {
    Trace("%semit-without-document", Thread());
    return;
  }
  output(output_context, block, length_bytes);
  char hex[2 * kShownBytes + 1] = "";
  for (uint32_t i = 0; i < length_bytes && i < kShownBytes; i++) {
    snprintf(hex + (size_t)2 * i, 3, "%02x", block[i]);
  }
  Trace("%scallback %u %s", Thread(), length_bytes, hex);
}

static int32_t Perform(const char* entry) { return PerformScript(entry, HPE_OK, HandToCallback); }

/* Most entries after the handle take numbers only: trace them and do as the script says. */
static int32_t NoNumber(const char* entry, HPEHandle handle) {
  Trace("%s%s %s", Thread(), entry, Handle(handle));
  return Perform(entry);
}

static int32_t OneNumber(const char* entry, HPEHandle handle, int64_t value) {
  Trace("%s%s %s %lld", Thread(), entry, Handle(handle), (long long)value);
  return Perform(entry);
}

static int32_t TwoNumbers(const char* entry, HPEHandle handle, uint32_t first, uint32_t second) {
  Trace("%s%s %s %u %u", Thread(), entry, Handle(handle), first, second);
  return Perform(entry);
}

EXPORTED HPEHandle CreateHostPrintEngine(void);
EXPORTED HPEHandle CreateHostPrintEngine(void) {
  Trace("%sCreateHostPrintEngine", Thread());
  return PerformScript("CreateHostPrintEngine", 1, HandToCallback) != 0 ? (HPEHandle)&instance
                                                                        : NULL;
}

EXPORTED int32_t HPEInitialize(HPEHandle handle, const char* path1, const char* path2,
                               const char* path3, const char* path4);
EXPORTED int32_t HPEInitialize(HPEHandle handle, const char* path1, const char* path2,
                               const char* path3, const char* path4) {
  Trace("%sHPEInitialize %s %s %s %s %s", Thread(), Handle(handle), path1, path2, path3, path4);
  return Perform("HPEInitialize");
}

EXPORTED int32_t HPEStartDoc(HPEHandle handle, HPEOutputCallback callback, const char* table,
                             uint32_t zero1, uint32_t zero2, uint32_t code, void* context);
EXPORTED int32_t HPEStartDoc(HPEHandle handle, HPEOutputCallback callback, const char* table,
                             uint32_t zero1, uint32_t zero2, uint32_t code, void* context) {
  const char* known = context == NULL ? "NULL" : "CTX";
  if (output_context != NULL && context != output_context) known = "OTHER-CTX";
  Trace("%sHPEStartDoc %s %s %s %u %u %u %s", Thread(), Handle(handle),
        callback != NULL ? "CB" : "NULL", table, zero1, zero2, code, known);
  output = callback;
  output_context = context;
  return Perform("HPEStartDoc");
}

EXPORTED int32_t HPEStartPage(HPEHandle handle);
EXPORTED int32_t HPEStartPage(HPEHandle handle) { return NoNumber("HPEStartPage", handle); }

EXPORTED int32_t HPESendBand(HPEHandle handle, uint32_t zero, uint32_t y, uint32_t raster_count,
                             uint32_t pixels_per_raster, uint32_t bytes_per_raster,
                             const void* data);
EXPORTED int32_t HPESendBand(HPEHandle handle, uint32_t zero, uint32_t y, uint32_t raster_count,
                             uint32_t pixels_per_raster, uint32_t bytes_per_raster,
                             const void* data) {
  AppendToFileOf("ZR7700_ENGINE_PIXELS", data, (size_t)raster_count * bytes_per_raster);
  Trace("%sHPESendBand %s %u %u %u %u %u", Thread(), Handle(handle), zero, y, raster_count,
        pixels_per_raster, bytes_per_raster);
  return Perform("HPESendBand");
}

EXPORTED int32_t HPEEndPage(HPEHandle handle, uint32_t zero);
EXPORTED int32_t HPEEndPage(HPEHandle handle, uint32_t zero) {
  return OneNumber("HPEEndPage", handle, zero);
}

EXPORTED int32_t HPEEndDoc(HPEHandle handle, uint32_t zero);
EXPORTED int32_t HPEEndDoc(HPEHandle handle, uint32_t zero) {
  return OneNumber("HPEEndDoc", handle, zero);
}

EXPORTED void DestroyHostPrintEngine(HPEHandle handle);
EXPORTED void DestroyHostPrintEngine(HPEHandle handle) {
  NoNumber("DestroyHostPrintEngine", handle);
}

EXPORTED int32_t SetInputResolution(HPEHandle handle, uint32_t axis, uint32_t dots_per_inch);
EXPORTED int32_t SetInputResolution(HPEHandle handle, uint32_t axis, uint32_t dots_per_inch) {
  return TwoNumbers("SetInputResolution", handle, axis, dots_per_inch);
}

EXPORTED int32_t SetInstalledCartridge(HPEHandle handle, uint32_t slot, uint32_t kind,
                                       uint32_t installed);
EXPORTED int32_t SetInstalledCartridge(HPEHandle handle, uint32_t slot, uint32_t kind,
                                       uint32_t installed) {
  Trace("%sSetInstalledCartridge %s %u %u %u", Thread(), Handle(handle), slot, kind, installed);
  return Perform("SetInstalledCartridge");
}

EXPORTED int32_t SetAlignmentInformation(HPEHandle handle, uint32_t item, uint32_t value);
EXPORTED int32_t SetAlignmentInformation(HPEHandle handle, uint32_t item, uint32_t value) {
  return TwoNumbers("SetAlignmentInformation", handle, item, value);
}

/* #name keeps the entry's own name in the trace even in a library where it is renamed away. */
#define NUMBER_ENTRY(name, type)          \
  EXPORTED int32_t name(HPEHandle, type); \
  EXPORTED int32_t name(HPEHandle h, type value) { return OneNumber(#name, h, value); }
NUMBER_ENTRY(SetLeftMargin, int32_t)
NUMBER_ENTRY(SetTopMargin, int32_t)
NUMBER_ENTRY(SetPrintableWidth, int32_t)
NUMBER_ENTRY(SetPrintableHeight, int32_t)
NUMBER_ENTRY(SetPhysicalWidth, int32_t)
NUMBER_ENTRY(SetHPERasterFormat, uint32_t)
NUMBER_ENTRY(SetPageIntent, int32_t)
NUMBER_ENTRY(SetMediaType, uint32_t)
NUMBER_ENTRY(SetOutputPrintQuality, uint32_t)
NUMBER_ENTRY(SetPaperTray, int32_t)
NUMBER_ENTRY(SetImageSharpeningLevel, int32_t)

/* The header's types and these definitions must agree. */
#define CHECK_TYPE(name, type) static const type checked_##name __attribute__((unused)) = name;
HPE_ENTRIES(CHECK_TYPE)
