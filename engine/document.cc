// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/document.h"

#include <cstdio>
#include <cstring>

#include "base/byte_order.h"
#include "base/log.h"
#include "base/settings.h"
#include "base/wrapping.h"
#include "engine/clip_buffers.h"
#include "engine/engine_entries.h"
#include "engine/engine_output.h"
#include "engine/fatal_limit.h"
#include "engine/ini_file.h"
#include "engine/job_variables.h"
#include "engine/ppd_choices.h"

namespace zr7700 {
namespace {

// A disc of 120 mm at 600 dpi.
constexpr uint32_t kDiscDots = 2834;
constexpr int32_t kTopMarginDots = 69;
constexpr uint32_t kRoundDisc = 1;
constexpr uint32_t kClipBufferBytes = 20400;
constexpr uint32_t kMaxImageDots = 5100;
constexpr uint32_t kPhotoThreshold = 700;
constexpr uint32_t kDraftDpi = 300;
constexpr uint8_t kStandardColors = 1;

constexpr char kConfiguration[] = "[Configuration]";
constexpr char kSwathBuilder[] = "[ESwathBuilder]";
constexpr char kPassesKey[] = "Slot1NumPassesOverride=";

bool InitializeEngine(const JobVariables& variables) {
  LogMessage(kLogMilestone, "   ### HPEInitialize");
  const int32_t status = engine_entries.HPEInitialize(
      engineHandle, variables.files.enginePath1, variables.files.enginePath2,
      variables.files.enginePath3, variables.files.enginePath4);
  if (status != HPE_OK) {
    LogMessage(kLogDetail, "   HPEInitialize Failed 0x%x", static_cast<uint32_t>(status));
    return false;
  }
  LogMessage(kLogDetail, "   HPEInitialize Success %s %s", variables.files.enginePath3,
             variables.files.enginePath4);
  return true;
}

void SetFixedGeometry(JobVariables& variables) {
  LogMessage(kLogMilestone, "Default Page Format CDDVD");
  variables.discForm = kRoundDisc;
  variables.imageHeight = kDiscDots;
  variables.imageWidth = kDiscDots;
  const int32_t offset =
      variables.isHeron == 1 ? settings.TopMarginOffsetHeron : settings.TopMarginOffset;
  variables.topDiscOffset = WrappingAdd(offset, kTopMarginDots);
}

void SetLimits(JobVariables& variables) {
  variables.clipBufferBytes = kClipBufferBytes;
  variables.maxImageDots = kMaxImageDots;
  variables.nPhotoThreshold = kPhotoThreshold;
  variables.ImageSharpeningValue = settings.ImageSharpeningLevel;
  variables.nRunCompValue = static_cast<uint32_t>(settings.RunComp);
  variables.nRunCompDiv = static_cast<uint32_t>(settings.RunCompDiv);
  if (variables.nRunCompDiv == 0) LogMessage(kLogDetail, "   RunCompDiv is 0: no ink limit");
}

// The resolution is first known at page start, so that a job's one setup never finds a draft here.
void SetDraftUnits(JobVariables& variables) {
  if (variables.horzResolution != kDraftDpi) {
    LogMessage(kLogDetail, "NORMAL MODE");
    return;
  }
  LogMessage(kLogDetail, "Draft Mode set Top Offset to 300 dpi units");
  variables.topDiscOffset =
      static_cast<int32_t>(static_cast<uint32_t>(variables.topDiscOffset) >> 1);
  variables.InnerDiam >>= 1;
  variables.OuterMargin >>= 1;
}

// What becomes of the key for each print quality: its new value, or one of these.
constexpr char kRemoved[] = "";
constexpr const char* kLeftAsItIs = nullptr;

struct PassRow {
  uint8_t print_quality;
  const char* heron;
  const char* granite;
};

constexpr PassRow kPassRows[] = {
    {1, "1", "1"},
    {2, "2", kRemoved},
    {3, "4", kLeftAsItIs},
    {4, "8", "8"},
};

void WritePassCount(const JobVariables& variables) {
  for (const PassRow& row : kPassRows) {
    if (row.print_quality != variables.PrintQuality) continue;
    const char* const passes = variables.isHeron == 1 ? row.heron : row.granite;
    if (passes == kRemoved) {
      RemoveFerroIniKey(kSwathBuilder, kPassesKey);
    } else if (passes != kLeftAsItIs) {
      WriteFerroIniFile(kSwathBuilder, kPassesKey, passes);
    }
  }
}

void WriteIniFile(const JobVariables& variables) {
  WriteFerroIniFile(kConfiguration, "UseDebugSettings=", "1");
  WriteFerroIniFile(kConfiguration, "Printer=", "1");
  WriteFerroIniFile(kConfiguration,
                    "Color=", variables.ColorMatching == kStandardColors ? "1" : "2");
  WritePassCount(variables);
}

const char* ChooseColorTable(const JobVariables& variables) {
  if (variables.ColorMatching == kStandardColors) return variables.files.colorTableStandard;
  const bool fine = variables.PrintQuality == 3 || variables.PrintQuality == 4;
  if (fine && IsHighQualityMedium(variables)) return variables.files.colorTablePhotoGlossy;
  return variables.files.colorTablePhoto;
}

// The engine takes a colour table's path from a buffer of this size.
struct ColorTablePath {
  char text[256];
};

ColorTablePath CopyColorTablePath(const JobVariables& variables) {
  ColorTablePath path = {};
  const char* const chosen = ChooseColorTable(variables);
  if (chosen == nullptr) return path;
  if (strlen(chosen) >= sizeof path.text) EndProcessAtLimit("256 bytes in a path", chosen);
  snprintf(path.text, sizeof path.text, "%s", chosen);
  return path;
}

int32_t StartEngineDocument(JobVariables& variables, const ColorTablePath& path) {
  return engine_entries.HPEStartDoc(engineHandle, WriteEngineOutput, path.text, 0, 0,
                                    HPE_START_DOC_CODE, &variables);
}

bool OpenFirstDocument(JobVariables& variables) {
  const ColorTablePath path = CopyColorTablePath(variables);
  LogMessage(kLogDetail, "   ### HPEStartDoc Called with color table %s", path.text);
  const int32_t status = StartEngineDocument(variables, path);
  if (status != HPE_OK) {
    LogMessage(kLogDetail, "   ### HPEStartDoc Failed 0x%x", static_cast<uint32_t>(status));
    return false;
  }
  LogMessage(kLogDetail, "   ### HPEStartDoc Passed");
  return true;
}

}  // namespace

bool DocumentSetup(ppd_file_t* ppd) {
  JobVariables& variables = job_variables;
  LogMessage(kLogMilestone, "SETUP");
  engineHandle = engine_entries.CreateHostPrintEngine();
  LogMessage(kLogMilestone,
             HostByteOrder() == kLittleEndianHost ? "   LittleEndian" : "   BigEndian");
  if (!InitializeEngine(variables)) return false;
  ReadDiscChoices(ppd, variables);
  SetFixedGeometry(variables);
  SetLimits(variables);
  SetDraftUnits(variables);
  ReadPrintChoices(ppd, variables);
  WriteIniFile(variables);
  if (!OpenFirstDocument(variables)) return false;
  LogMessage(kLogMilestone, "SETUP_END");
  return true;
}

bool RestartDocument() {
  FlushEngineOutput();
  engine_entries.HPEEndDoc(engineHandle, 0);
  FlushEngineOutput();
  StartEngineDocument(job_variables, CopyColorTablePath(job_variables));
  return true;
}

bool EndDocument() {
  LogMessage(kLogDetail, "   ### HPEEndDoc");
  const int32_t status = engine_entries.HPEEndDoc(engineHandle, 0);
  if (status != HPE_OK) {
    LogMessage(kLogDetail, "HPEEndDoc Failed 0x%x", static_cast<uint32_t>(status));
  }
  ClipDataBufsDelete(job_variables);
  engine_entries.DestroyHostPrintEngine(engineHandle);
  return true;
}

}  // namespace zr7700
