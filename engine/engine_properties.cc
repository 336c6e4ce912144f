// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/engine_properties.h"

#include <algorithm>

#include "base/log.h"
#include "base/wrapping.h"
#include "engine/engine_codes.h"
#include "engine/engine_entries.h"
#include "engine/ini_file.h"
#include "engine/margins.h"

namespace zr7700 {
namespace {

// A page narrower than this many inches is beyond the printer.
constexpr int32_t kNarrowestInches = 2;

constexpr int32_t kPageIntentPhotos = 1;
constexpr int32_t kDiscTray = 2;
constexpr uint32_t kRasterFormatRgbm = 4;
constexpr int32_t kHighestSharpening = 12;

struct AlignmentItem {
  uint32_t item;
  uint32_t value;
};

// Logs the outcome of one property call: `done` with the value sent, or `failed` with the engine's
// status. True on success.
bool ReportNumber(const char* done, const char* failed, int32_t status, int32_t value) {
  const bool ok = status == HPE_OK;
  LogMessage(kLogDetail, "%s%i)", ok ? done : failed, ok ? value : status);
  return ok;
}

bool ReportNumber(const char* done, const char* failed, int32_t status, uint32_t value) {
  return ReportNumber(done, failed, status, static_cast<int32_t>(value));
}

void WritePrintDirection(const char* key, const char* value, const char* failed) {
  if (!WriteFerroIniFile("[ESwathBuilder]", key, value)) LogMessage(kLogDetail, "%s", failed);
}

void PushPrintDirection(const JobVariables& variables) {
  const bool both_ways = variables.bidirectional == 1;
  LogMessage(kLogDetail, both_ways ? "     Setting print direction to BIDI"
                                   : "     Setting print direction to UNI");
  WritePrintDirection("Slot1PrintDirection=", both_ways ? "0" : "2",
                      "     Slot1 set print direction FAILED");
  WritePrintDirection("Slot2PrintDirection=", both_ways ? "0" : "1",
                      "     Slot2 set print direction FAILED");
}

bool PushResolution(const JobVariables& variables) {
  const uint32_t horizontal = variables.horzResolution;
  const uint32_t vertical = variables.vertResolution;
  bool ok =
      ReportNumber("      SetHorzInputResolution = (", "      SetHorzInputResolution FAILED - (",
                   engine_entries.SetInputResolution(engineHandle, 0, horizontal), horizontal);
  ok &= ReportNumber("      SetVertInputResolution = (", "      SetVertInputResolution FAILED - (",
                     engine_entries.SetInputResolution(engineHandle, 1, vertical), vertical);
  return ok;
}

bool IsNarrow(const JobVariables& variables) {
  return WrappingDivide(static_cast<int32_t>(variables.pageWidth),
                        static_cast<int32_t>(variables.horzResolution)) < kNarrowestInches;
}

int32_t NarrowestDots(const JobVariables& variables) {
  return WrappingMultiply(kNarrowestInches, static_cast<int32_t>(variables.horzResolution));
}

bool PushLeftMargin(const JobVariables& variables) {
  int32_t margin = std::max(ripGetMarginWidth(variables), 0);
  if (IsNarrow(variables)) {
    LogMessage(kLogDetail, "      Left Margin = (%i)", margin);
    const int32_t missing_dots =
        WrappingSubtract(NarrowestDots(variables), static_cast<int32_t>(variables.pageWidth));
    margin = WrappingSubtract(margin, missing_dots);
    LogMessage(kLogDetail, "      Changing LeftMargin to (%i) because of printer limitation",
               margin);
  }
  return ReportNumber("      SetLeftMargin = (", "      SetLeftMargin FAILED - (",
                      engine_entries.SetLeftMargin(engineHandle, margin), margin);
}

bool PushTopMargin(const JobVariables& variables) {
  const int32_t margin = std::max(variables.topDiscOffset, 0);
  return ReportNumber("      SetTopMargin = (", "      SetTopMargin FAILED - (",
                      engine_entries.SetTopMargin(engineHandle, margin), margin);
}

bool PushPhysicalWidth(const JobVariables& variables) {
  // 8.5 inches; 5100 dots at 600 dpi.
  const auto width = static_cast<int32_t>(variables.horzResolution * 5100U / 600U);
  return ReportNumber("      SetPhysicalWidth = (", "      SetPhysicalWidth FAILED - (",
                      engine_entries.SetPhysicalWidth(engineHandle, width), width);
}

bool PushPrintableWidth(const JobVariables& variables) {
  auto width = static_cast<int32_t>(variables.pageWidth);
  if (IsNarrow(variables)) {
    LogMessage(kLogDetail, "      Print Width = (%i)", width);
    width = NarrowestDots(variables);
    LogMessage(kLogDetail, "      Changing Width to (%i) because of printer limitation", width);
  }
  return ReportNumber("      SetPrintableWidth = (", "      SetPrintableWidth FAILED - (",
                      engine_entries.SetPrintableWidth(engineHandle, width), width);
}

bool PushPrintableHeight(const JobVariables& variables) {
  const auto height = static_cast<int32_t>(variables.pageHeight);
  return ReportNumber("      SetPrintableHeight = (", "      SetPrintableHeight FAILED - (",
                      engine_entries.SetPrintableHeight(engineHandle, height), height);
}

// Logs a failure: `failed` with the status as a 32-bit pattern. True on success.
bool ReportPattern(const char* failed, int32_t status) {
  if (status == HPE_OK) return true;
  LogMessage(kLogDetail, "%s%X)", failed, static_cast<uint32_t>(status));
  return false;
}

// Slot 0 holds the colour cartridge, slot 1 would hold a black one. The two failure lines are
// indented differently.
bool PushCartridges() {
  const int32_t color_status = engine_entries.SetInstalledCartridge(engineHandle, 0, 4, 1);
  LogMessage(kLogDetail, "      CMY Cartridge Installed");
  bool ok = ReportPattern("   SetInstalledCartridge FAILED - (0x", color_status);
  const int32_t black_status = engine_entries.SetInstalledCartridge(engineHandle, 1, 3, 0);
  LogMessage(kLogDetail, "      K Cartridge Not Installed");
  ok &= ReportPattern("     SetInstalledCartridge FAILED - (0x", black_status);
  return ok;
}

bool PushQualityAndMedia(const JobVariables& variables) {
  const bool is_heron = variables.isHeron == 1;
  const EngineCode quality = QualityCode(is_heron, variables.PrintQuality);
  LogMessage(kLogDetail, "%s", quality.log_text);
  const EngineCode media = MediaCode(is_heron, variables.DiscSurfaceQuality);
  LogMessage(kLogDetail, "%s", media.log_text);
  bool ok = ReportNumber("      SetMediaType = (", "      SetMediaType FAILED - (",
                         engine_entries.SetMediaType(engineHandle, media.code), media.code);
  ok &=
      ReportNumber("      SetOutputPrintQuality = (", "      SetOutputPrintQuality FAILED - (",
                   engine_entries.SetOutputPrintQuality(engineHandle, quality.code), quality.code);
  return ok;
}

bool PushPageIntent() {
  LogMessage(kLogDetail, "      Setting PageIntent to PI_Photos");
  return ReportPattern("      SetPageIntent FAILED - (0x",
                       engine_entries.SetPageIntent(engineHandle, kPageIntentPhotos));
}

bool PushSharpening(const JobVariables& variables) {
  int32_t level = variables.ImageSharpeningValue;
  if (level < 1 || level > kHighestSharpening) level = kHighestSharpening;
  const int32_t status = engine_entries.SetImageSharpeningLevel(engineHandle, level);
  if (status != HPE_OK) return ReportPattern("      SetImageSharpeningLevel FAILED - (0x", status);
  return ReportNumber("      SetImageSharpeningLevel = (",
                      "      SetImageSharpeningLevel FAILED - (", status, level);
}

void PushAlignment(const JobVariables& variables) {
  const AlignmentItem items[] = {{0, 112},
                                 {1, 112},
                                 {2, 112},
                                 {3, 112},
                                 {6, variables.alignmentValue6},
                                 {14, variables.alignmentValue14},
                                 {7, 40},
                                 {9, 40}};
  for (const AlignmentItem& entry : items) {
    engine_entries.SetAlignmentInformation(engineHandle, entry.item, entry.value);
  }
}

}  // namespace

bool SetHPEProperties(const JobVariables& variables) {
  LogMessage(kLogMilestone, "   SetHPEProperties: Printing with the following FERRO settings");
  PushPrintDirection(variables);
  bool ok = PushResolution(variables);
  ok &= PushLeftMargin(variables);
  ok &= PushTopMargin(variables);
  ok &= PushPhysicalWidth(variables);
  ok &= PushPrintableWidth(variables);
  ok &= PushPrintableHeight(variables);
  ok &= PushCartridges();
  ok &= PushQualityAndMedia(variables);
  ok &= ReportNumber("      SetPaperTray = (", "      SetPaperTray FAILED - (",
                     engine_entries.SetPaperTray(engineHandle, kDiscTray), kDiscTray);
  ok &= PushPageIntent();
  ok &= PushSharpening(variables);
  ok &= ReportNumber("      SetHPERasterFormat = (", "      SetHPERasterFormat FAILED - (",
                     engine_entries.SetHPERasterFormat(engineHandle, kRasterFormatRgbm),
                     kRasterFormatRgbm);
  PushAlignment(variables);
  return ok;
}

}  // namespace zr7700
