/* The host print engine's C interface: the 22 entries that an engine library exports.
 *
 * One header for everybody who meets at this boundary: the filter's loader, the engines that the
 * tests load, and the open engine. It is plain C and includes nothing of the filter's.
 *
 * Data widths. The handle, strings, the callback, its context and raster data are pointers. Every
 * number is 32 bits wide, the 16-bit media and quality codes included. A result is a signed 32-bit
 * status: HPE_OK (0) for success, anything else an error code of the engine's own.
 *
 * Reserved arguments, named zero, must be 0.
 *
 * After an error the host may go on with any later call of the road. Whatever an entry answers, the
 * stream that it hands over stays whole: a page that could not take a line for good is given up.
 *
 * Order of calls. An engine instance walks this road; a property entry (entries 9 to 22) may be
 * called any time after HPEInitialize and counts from the next HPEStartPage on:
 *
 *   CreateHostPrintEngine
 *     HPEInitialize
 *       HPEStartDoc ──────────────────────────────┐
 *         [properties] HPEStartPage               │ once per page; a document may
 *           HPESendBand, HPESendBand ...          │ also be ended without a page
 *         HPEEndPage                              │
 *       HPEEndDoc ────────────────────────────────┘ and HPEStartDoc again
 *   DestroyHostPrintEngine
 *
 * A cancelled job ends its document with a page still open; the engine must accept that.
 *
 * Threads. The filter calls every entry from one thread. The engine may use threads of its own but
 * calls the output callback only from inside an entry and on that entry's thread.
 *
 * Ownership. Strings and raster data belong to the caller and are valid only during the call,
 * except the callback and its context, which the engine keeps until HPEEndDoc. The bytes that the
 * engine hands to the callback belong to the engine; the callback may change them in place and
 * keeps no pointer to them.
 *
 * SPDX-FileCopyrightText: The rastertoZR7700 authors
 * SPDX-License-Identifier: Apache-2.0 */
#ifndef ZR7700_HOST_PRINT_ENGINE_H_
#define ZR7700_HOST_PRINT_ENGINE_H_

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* One engine instance, opaque to the caller. */
typedef void* HPEHandle;

enum {
  HPE_OK = 0,
  /* What the filter's guards answer for an entry that the library lacks. */
  HPE_ENTRY_MISSING = 2,
  /* The fixed sixth argument of HPEStartDoc. */
  HPE_START_DOC_CODE = 142
};

/* Receives rendered printer bytes: `length_bytes` bytes at `data`, in stream order. `context` is
 * the last argument of HPEStartDoc. May change the bytes in place. It has no way to report a failed
 * write: the engine takes the bytes for delivered. Must not throw. */
typedef void (*HPEOutputCallback)(void* context, uint8_t* data, uint32_t length_bytes);

/* 1. Makes an engine instance; null when it cannot. The caller gives it back with
 * DestroyHostPrintEngine. */
typedef HPEHandle (*CreateHostPrintEngineEntry)(void);

/* 2. Tells the instance where its files lie: four path prefixes, which the engine completes. */
typedef int32_t (*HPEInitializeEntry)(HPEHandle, const char* path1, const char* path2,
                                      const char* path3, const char* path4);

/* 3. Opens a document: rendered bytes go to `output` with `context`, colours through the table in
 * the file `color_table_path`. The two zeros and `code` (HPE_START_DOC_CODE) are fixed. */
typedef int32_t (*HPEStartDocEntry)(HPEHandle, HPEOutputCallback output,
                                    const char* color_table_path, uint32_t zero1, uint32_t zero2,
                                    uint32_t code, void* context);

/* 4. Opens a page with the properties as they stand. */
typedef int32_t (*HPEStartPageEntry)(HPEHandle);

/* 5. Takes raster lines: `raster_count` lines of `pixels_per_raster` pixels, `bytes_per_raster`
 * bytes a line, the first being line `y` of the page. A pixel is 4 bytes: red, green, blue, 0.
 * Lines come in rising order; a line left out is white. */
typedef int32_t (*HPESendBandEntry)(HPEHandle, uint32_t zero, uint32_t y, uint32_t raster_count,
                                    uint32_t pixels_per_raster, uint32_t bytes_per_raster,
                                    const void* data);

/* 6. Closes the page. */
typedef int32_t (*HPEEndPageEntry)(HPEHandle, uint32_t zero);

/* 7. Closes the document; everything rendered has reached the callback when it returns. */
typedef int32_t (*HPEEndDocEntry)(HPEHandle, uint32_t zero);

/* 8. Gives the instance back. */
typedef void (*DestroyHostPrintEngineEntry)(HPEHandle);

/* 9. `axis` 0 horizontal, 1 vertical; the dots per inch of the page's raster. */
typedef int32_t (*SetInputResolutionEntry)(HPEHandle, uint32_t axis, uint32_t dots_per_inch);

/* 10 to 14, 18, 21, 22: one number each. Lengths are in dots at the input resolution, but for the
 * top margin, which counts 1/600 inch at every resolution. */
typedef int32_t (*SetNumberEntry)(HPEHandle, int32_t value);

/* 15. `slot` 0 or 1, the kind of cartridge in it, and whether it is there (1) or not (0). */
typedef int32_t (*SetInstalledCartridgeEntry)(HPEHandle, uint32_t slot, uint32_t kind,
                                              uint32_t installed);

/* 16, 19, 20: a code: the raster format, the media type, the print quality. */
typedef int32_t (*SetCodeEntry)(HPEHandle, uint32_t code);

/* 17. One of the engine's numbered alignment items. */
typedef int32_t (*SetAlignmentInformationEntry)(HPEHandle, uint32_t item, uint32_t value);

/* The entries in the order in which they are resolved, as X(name, type). A library exports each
 * under exactly this name with C linkage. */
#define HPE_ENTRIES(X)                                     \
  X(CreateHostPrintEngine, CreateHostPrintEngineEntry)     \
  X(HPEInitialize, HPEInitializeEntry)                     \
  X(HPEStartDoc, HPEStartDocEntry)                         \
  X(HPEStartPage, HPEStartPageEntry)                       \
  X(HPESendBand, HPESendBandEntry)                         \
  X(HPEEndPage, HPEEndPageEntry)                           \
  X(HPEEndDoc, HPEEndDocEntry)                             \
  X(DestroyHostPrintEngine, DestroyHostPrintEngineEntry)   \
  X(SetInputResolution, SetInputResolutionEntry)           \
  X(SetLeftMargin, SetNumberEntry)                         \
  X(SetTopMargin, SetNumberEntry)                          \
  X(SetPrintableWidth, SetNumberEntry)                     \
  X(SetPrintableHeight, SetNumberEntry)                    \
  X(SetPhysicalWidth, SetNumberEntry)                      \
  X(SetInstalledCartridge, SetInstalledCartridgeEntry)     \
  X(SetHPERasterFormat, SetCodeEntry)                      \
  X(SetAlignmentInformation, SetAlignmentInformationEntry) \
  X(SetPageIntent, SetNumberEntry)                         \
  X(SetMediaType, SetCodeEntry)                            \
  X(SetOutputPrintQuality, SetCodeEntry)                   \
  X(SetPaperTray, SetNumberEntry)                          \
  X(SetImageSharpeningLevel, SetNumberEntry)

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* ZR7700_HOST_PRINT_ENGINE_H_ */
