// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/page.h"

#include "base/log.h"
#include "base/printable.h"
#include "disc/raster_header.h"
#include "engine/clip_buffers.h"
#include "engine/engine_entries.h"
#include "engine/engine_output.h"
#include "engine/engine_properties.h"
#include "engine/job_variables.h"
#include "engine/print_header.h"

namespace zr7700 {
namespace {

void TakeGeometry(JobVariables& variables, const cups_page_header2_t& header) {
  const uint32_t margin = variables.OuterMargin;
  variables.horzResolution = header.HWResolution[0];
  variables.vertResolution = header.HWResolution[1];
  variables.imageWidth = header.cupsWidth;
  variables.imageHeight = header.cupsHeight;
  variables.bottomOutputImage = static_cast<uint16_t>(header.cupsHeight - margin);
  variables.topOutputImage = static_cast<uint16_t>(margin);
  variables.leftOutputImage = margin;
  variables.rightOutputImage = variables.imageWidth - margin;
  variables.pageHeight = header.cupsHeight;
  variables.pageWidth = header.cupsWidth;
}

void LogSigned(const char* text, uint32_t value) {
  LogMessage(kLogDetail, "%s%i", text, static_cast<int32_t>(value));
}

void LogJobVariables(const JobVariables& variables) {
  LogMessage(kLogDetail, "-------  Job Variables  -------\n");
  LogSigned("   ColorMatching: ", variables.ColorMatching);
  LogSigned("   DiscSurfaceQuality: ", variables.DiscSurfaceQuality);
  LogSigned("   PrintQuality: ", variables.PrintQuality);
  LogSigned("   topDiscOffset: ", static_cast<uint32_t>(variables.topDiscOffset));
  LogSigned("   OuterMargin: ", variables.OuterMargin);
  LogSigned("   InnerDiam: ", variables.InnerDiam);
  LogSigned("   bottomOutputImage: ", variables.bottomOutputImage);
  LogSigned("   topOutputImage: ", variables.topOutputImage);
  LogSigned("   leftOutputImage: ", variables.leftOutputImage);
  LogSigned("   rightOutputImage: ", variables.rightOutputImage);
  LogSigned("   InkSaturation: ", variables.InkSaturation);
}

// A header's length as a whole number, cut toward zero; what no 32-bit number can hold becomes 0.
uint32_t WholePoints(float points) {
  return points >= -2147483648.0F && points < 4294967296.0F
             ? static_cast<uint32_t>(static_cast<int64_t>(points))
             : 0;
}

void LogNumber(const char* text, uint32_t value) { LogMessage(kLogMilestone, "%s%u", text, value); }

void LogPage(const JobVariables& variables, const cups_page_header2_t& header) {
  LogMessage(kLogMilestone, "   Page Size %u, %u", variables.pageWidth, variables.pageHeight);
  LogMessage(kLogMilestone, "   Cups Page Size %s", Printable(header.cupsPageSizeName).c_str());
  LogMessage(kLogMilestone, "   Cups Page Size %u, %u", WholePoints(header.cupsPageSize[0]),
             WholePoints(header.cupsPageSize[1]));
  LogMessage(kLogMilestone, "   Resolution H: %u, V: %u", variables.horzResolution,
             variables.vertResolution);
  LogNumber("   cupsBitsPerPixel ", header.cupsBitsPerPixel);
  LogNumber("   cupsBitsPerColor ", header.cupsBitsPerColor);
  LogNumber("   cupsColorOrder ", ColorOrderOf(header));
  LogNumber("   cupsBytesPerLine ", header.cupsBytesPerLine);
  LogNumber("   nPhotoThreshold ", variables.nPhotoThreshold);
  LogNumber("   nRunCompValue ", variables.nRunCompValue);
  LogNumber("   nRunCompDiv ", variables.nRunCompDiv);
  LogNumber("   ImageSharpeningValue ", static_cast<uint32_t>(variables.ImageSharpeningValue));
}

bool Refuse(const char* text, uint32_t value) {
  LogMessage(kLogDetail, "%s%u!", text, value);
  return false;
}

// What the line conversion, and the division by the resolution, can handle.
bool CheckFormat(const cups_page_header2_t& header) {
  if (header.cupsBitsPerColor != 8 && header.cupsBitsPerColor != 16) {
    return Refuse("   Bad cupsBitsPerColor=", header.cupsBitsPerColor);
  }
  const uint32_t order = ColorOrderOf(header);
  if (order != CUPS_ORDER_CHUNKED) return Refuse("   Bad cupsColorOrder=", order);
  const uint32_t space = ColorSpaceOf(header);
  if (space != CUPS_CSPACE_W && space != CUPS_CSPACE_RGB)
    return Refuse("   Bad cupsColorSpace=", space);
  if (header.HWResolution[0] == 0) return Refuse("   Bad HWResolution=", header.HWResolution[0]);
  return true;
}

void SendPrintHeader(const JobVariables& variables) {
  const uint32_t ink_warning = InkWarningValue(variables);
  LogMessage(kLogDetail, "     Color Ink Warning: %.8x", ink_warning);
  PrintHeader bytes = BuildPrintHeader(variables, ink_warning);
  WriteEngineOutput(nullptr, bytes.data(), bytes.size());
  LogMessage(kLogDetail, "     Print HEADER written");
}

bool SetProperties(const JobVariables& variables) {
  LogMessage(kLogDetail, "   ### SetHPEProperties Called");
  const bool ok = SetHPEProperties(variables);
  LogMessage(kLogDetail, ok ? "   ### SetHPEProperties Passed" : "   ### SetHPEProperties Failed");
  return ok;
}

bool StartEnginePage() {
  LogMessage(kLogDetail, "   ### HPEStartPage Called");
  const int32_t status = engine_entries.HPEStartPage(engineHandle);
  const bool ok = status == HPE_OK;
  LogMessage(kLogDetail,
             ok ? "   ### HPEStartPage Passsed %p 0x%x" : "   ### HPEStartPage Failed %p 0x%x",
             engineHandle, static_cast<uint32_t>(status));
  return ok;
}

}  // namespace

bool StartPage(const cups_page_header2_t& header) {
  JobVariables& variables = job_variables;
  LogMessage(kLogMilestone, "START_PAGE");
  TakeGeometry(variables, header);
  LogJobVariables(variables);
  LogPage(variables, header);
  if (!CheckFormat(header)) return false;
  if (!ClipDataBufsCreate(variables)) {
    LogMessage(kLogDetail, "   Unable to create ClipDataBufs!");
    return false;
  }
  SendPrintHeader(variables);
  if (!SetProperties(variables) || !StartEnginePage()) return false;
  LogMessage(kLogMilestone, "START_PAGE_END");
  return true;
}

bool EndPage() {
  LogMessage(kLogMilestone, "END_PAGE");
  LogMessage(kLogDetail, "   ### HPEEndPage");
  const int32_t status = engine_entries.HPEEndPage(engineHandle, 0);
  if (status != HPE_OK) {
    LogMessage(kLogDetail, "   HPEEndPage Failed 0x%x", static_cast<uint32_t>(status));
  }
  LogMessage(kLogMilestone, "END_PAGE_END");
  return true;
}

}  // namespace zr7700
