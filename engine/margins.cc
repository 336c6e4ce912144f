// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/margins.h"

#include "base/log.h"
#include "base/settings.h"
#include "base/wrapping.h"

namespace zr7700 {
namespace {

// Dots at 600 dpi.
constexpr int32_t kPrinterMargin = 1921 - 5;
constexpr int32_t kGraniteHighQualityShift = 14;
constexpr uint32_t kDraftDpi = 300;

// The offset in dots from the printer's own margin. Heron's high-quality setting goes by the
// medium, not by the print quality, whatever its name says.
int32_t MarginOffset(const JobVariables& variables) {
  const bool high_quality = IsHighQualityMedium(variables);
  if (variables.isHeron == 1) {
    return high_quality ? settings.LeftMarginOffsetHeronHighQuality
                        : settings.LeftMarginOffsetHeron;
  }
  return WrappingSubtract(settings.LeftMarginOffset, high_quality ? kGraniteHighQualityShift : 0);
}

}  // namespace

int32_t ripGetMarginWidth(const JobVariables& variables) {
  LogMessage(kLogTrace, "     In ripGetMarginWidth");
  int32_t margin_dots = WrappingAdd(kPrinterMargin, MarginOffset(variables));
  if (margin_dots <= 0) {
    LogMessage(kLogDetail, "     WARN:  ripGetMarginWidth() < 0!");
    margin_dots = 0;
  }
  if (variables.horzResolution == kDraftDpi) {
    LogMessage(kLogDetail, "     Draft Mode set Margin to 300 dpi units");
    margin_dots >>= 1;
  }
  LogMessage(kLogDetail, "     Margin Width %u", static_cast<uint32_t>(margin_dots));
  return margin_dots;
}

}  // namespace zr7700
