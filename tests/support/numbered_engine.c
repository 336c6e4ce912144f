/* An engine library whose entry number n answers 100 + n and does nothing. ZR7700_WITHOUT_TRAY
 * leaves entry 21 out.
 *
 * SPDX-FileCopyrightText: The rastertoZR7700 authors
 * SPDX-License-Identifier: Apache-2.0 */
#include <stdint.h>

#define ENTRY(name, number) \
  int32_t name(void);       \
  int32_t name(void) { return 100 + (number); }

ENTRY(HPEInitialize, 2)
ENTRY(HPEStartDoc, 3)
ENTRY(HPEStartPage, 4)
ENTRY(HPESendBand, 5)
ENTRY(HPEEndPage, 6)
ENTRY(HPEEndDoc, 7)
ENTRY(SetInputResolution, 9)
ENTRY(SetLeftMargin, 10)
ENTRY(SetTopMargin, 11)
ENTRY(SetPrintableWidth, 12)
ENTRY(SetPrintableHeight, 13)
ENTRY(SetPhysicalWidth, 14)
ENTRY(SetInstalledCartridge, 15)
ENTRY(SetHPERasterFormat, 16)
ENTRY(SetAlignmentInformation, 17)
ENTRY(SetPageIntent, 18)
ENTRY(SetMediaType, 19)
ENTRY(SetOutputPrintQuality, 20)
#ifndef ZR7700_WITHOUT_TRAY
ENTRY(SetPaperTray, 21)
#endif
ENTRY(SetImageSharpeningLevel, 22)

void* CreateHostPrintEngine(void);
void* CreateHostPrintEngine(void) { return 0; }

void DestroyHostPrintEngine(void);
void DestroyHostPrintEngine(void) {}
