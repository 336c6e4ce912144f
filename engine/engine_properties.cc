// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/engine_properties.h"

#include <algorithm>
#include <cinttypes>

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

// Logs the outcome of one property call: with the engine's status when it failed, else with the
// value sent. True on success.
bool ReportNumber(const char* property, int32_t status, int32_t value) {
  if (status == HPE_OK) {
    LogMessage(kLogDetail, "      %s = (%" PRId32 ")", property, value);
  } else {
    LogMessage(kLogDetail, "      %s FAILED - (%" PRId32 ")", property, status);
  }
  return status == HPE_OK;
}

bool ReportNumber(const char* property, int32_t status, uint32_t value) {
  return ReportNumber(property, status, static_cast<int32_t>(value));
}

void WritePrintDirection(const char* slot, const char* key, const char* value) {
  if (!WriteFerroIniFile("[ESwathBuilder]", key, value)) {
    LogMessage(kLogDetail, "     %s set print direction FAILED", slot);
  }
}

void PushPrintDirection(const JobVariables& variables) {
  const bool both_ways = variables.bidirectional == 1;
  LogMessage(kLogDetail, "     Setting print direction to %s", both_ways ? "BIDI" : "UNI");
  WritePrintDirection("Slot1", "Slot1PrintDirection=", both_ways ? "0" : "2");
  WritePrintDirection("Slot2", "Slot2PrintDirection=", both_ways ? "0" : "1");
}

bool PushResolution(const JobVariables& variables) {
  const uint32_t horizontal = variables.horzResolution;
  const uint32_t vertical = variables.vertResolution;
  bool ok =
      ReportNumber("SetHorzInputResolution",
                   engine_entries.SetInputResolution(engineHandle, 0, horizontal), horizontal);
  ok &= ReportNumber("SetVertInputResolution",
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
    LogMessage(kLogDetail, "      Left Margin = (%" PRId32 ")", margin);
    const int32_t missing_dots =
        WrappingSubtract(NarrowestDots(variables), static_cast<int32_t>(variables.pageWidth));
    margin = WrappingSubtract(margin, missing_dots);
    LogMessage(kLogDetail,
               "      Changing LeftMargin to (%" PRId32 ") because of printer limitation", margin);
  }
  return ReportNumber("SetLeftMargin", engine_entries.SetLeftMargin(engineHandle, margin), margin);
}

bool PushTopMargin(const JobVariables& variables) {
  const int32_t margin = std::max(variables.topDiscOffset, 0);
  return ReportNumber("SetTopMargin", engine_entries.SetTopMargin(engineHandle, margin), margin);
}

bool PushPhysicalWidth(const JobVariables& variables) {
  // 8.5 inches; 5100 dots at 600 dpi.
  const auto width = static_cast<int32_t>(variables.horzResolution * 5100U / 600U);
  return ReportNumber("SetPhysicalWidth", engine_entries.SetPhysicalWidth(engineHandle, width),
                      width);
}

bool PushPrintableWidth(const JobVariables& variables) {
  auto width = static_cast<int32_t>(variables.pageWidth);
  if (IsNarrow(variables)) {
    LogMessage(kLogDetail, "      Print Width = (%" PRId32 ")", width);
    width = NarrowestDots(variables);
    LogMessage(kLogDetail, "      Changing Width to (%" PRId32 ") because of printer limitation",
               width);
  }
  return ReportNumber("SetPrintableWidth", engine_entries.SetPrintableWidth(engineHandle, width),
                      width);
}

bool PushPrintableHeight(const JobVariables& variables) {
  const auto height = static_cast<int32_t>(variables.pageHeight);
  return ReportNumber("SetPrintableHeight", engine_entries.SetPrintableHeight(engineHandle, height),
                      height);
}

// Logs a failure as a 32-bit pattern behind `failure`, which ends before the number.
bool ReportPattern(const char* failure, int32_t status) {
  if (status != HPE_OK) {
    LogMessage(kLogDetail, "%s FAILED - (0x%" PRIX32 ")", failure, static_cast<uint32_t>(status));
  }
  return status == HPE_OK;
}

// Slot 0 holds the colour cartridge, slot 1 would hold a black one. The two failure lines are
// indented differently.
bool PushCartridges() {
  const int32_t color_status = engine_entries.SetInstalledCartridge(engineHandle, 0, 4, 1);
  LogMessage(kLogDetail, "      CMY Cartridge Installed");
  bool ok = ReportPattern("   SetInstalledCartridge", color_status);
  const int32_t black_status = engine_entries.SetInstalledCartridge(engineHandle, 1, 3, 0);
  LogMessage(kLogDetail, "      K Cartridge Not Installed");
  ok &= ReportPattern("     SetInstalledCartridge", black_status);
  return ok;
}

bool PushQualityAndMedia(const JobVariables& variables) {
  const bool is_heron = variables.isHeron == 1;
  const EngineCode quality = QualityCode(is_heron, variables.PrintQuality);
  LogMessage(kLogDetail, "     Resolution %s", quality.log_text);
  const EngineCode media = MediaCode(is_heron, variables.DiscSurfaceQuality);
  LogMessage(kLogDetail, "     Media %s", media.log_text);
  bool ok = ReportNumber("SetMediaType", engine_entries.SetMediaType(engineHandle, media.code),
                         media.code);
  ok &=
      ReportNumber("SetOutputPrintQuality",
                   engine_entries.SetOutputPrintQuality(engineHandle, quality.code), quality.code);
  return ok;
}

bool PushPageIntent() {
  LogMessage(kLogDetail, "      Setting PageIntent to PI_Photos");
  return ReportPattern("      SetPageIntent",
                       engine_entries.SetPageIntent(engineHandle, kPageIntentPhotos));
}

bool PushSharpening(const JobVariables& variables) {
  int32_t level = variables.ImageSharpeningValue;
  if (level < 1 || level > kHighestSharpening) level = kHighestSharpening;
  const int32_t status = engine_entries.SetImageSharpeningLevel(engineHandle, level);
  if (status != HPE_OK) return ReportPattern("      SetImageSharpeningLevel", status);
  return ReportNumber("SetImageSharpeningLevel", status, level);
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
  ok &=
      ReportNumber("SetPaperTray", engine_entries.SetPaperTray(engineHandle, kDiscTray), kDiscTray);
  ok &= PushPageIntent();
  ok &= PushSharpening(variables);
  ok &= ReportNumber("SetHPERasterFormat",
                     engine_entries.SetHPERasterFormat(engineHandle, kRasterFormatRgbm),
                     kRasterFormatRgbm);
  PushAlignment(variables);
  return ok;
}

}  // namespace zr7700
