// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/condition_reports.h"

#include <cstdio>

#include "base/log.h"
#include "base/standard_error.h"
#include "status/user_texts.h"

namespace zr7700 {
namespace {

constexpr char kInkEmptyReason[] = "marker-supply-empty\n";
constexpr char kInkLowReason[] = "marker-supply-low\n";
constexpr char kPaperOutReason[] = "media-needed\n";

// How one condition is shown; the texts are whole standard-error lines.
struct ConditionTexts {
  const char* reason;  // null: none
  const char* turned_on;
  const char* turned_off;
  const char* log_set;
  const char* log_cleared;
};

constexpr ConditionTexts kInkEmpty = {kInkEmptyReason, ZR7700_UNRECOVERABLE ZR7700_TEXT_INK_EMPTY,
                                      ZR7700_RECOVERED ZR7700_TEXT_INK_EMPTY, "Setting ink empty",
                                      "Clearing ink empty"};
constexpr ConditionTexts kInkLow = {
    kInkLowReason, ZR7700_RECOVERABLE ZR7700_TEXT_INK_LOW,
    ZR7700_RECOVERED ZR7700_TEXT_CONTINUING ZR7700_RECOVERED ZR7700_TEXT_INK_LOW, "Setting ink low",
    "Clearing ink low"};
constexpr ConditionTexts kPaperOut = {
    kPaperOutReason, ZR7700_RECOVERABLE ZR7700_TEXT_BIN_EMPTY,
    ZR7700_RECOVERED ZR7700_TEXT_CONTINUING ZR7700_RECOVERED ZR7700_TEXT_BIN_EMPTY,
    "Setting paper out", "Clearing paper out"};
constexpr ConditionTexts kAlignment = {
    nullptr, ZR7700_RECOVERABLE ZR7700_TEXT_ALIGN,
    ZR7700_RECOVERED ZR7700_TEXT_CONTINUING ZR7700_RECOVERED ZR7700_TEXT_ALIGN,
    "Setting alignment needed", "Clearing alignment needed"};

// What CUPS has been told.
bool InkEmptyReported = false;
bool InkLowReported = false;
bool PaperOutReported = false;
bool AlignmentNeededReported = false;

void Report(const ConditionTexts& texts, bool holds, bool& reported) {
  if (holds == reported) return;
  reported = holds;
  if (texts.reason != nullptr) TellCups("STATE: %c%s", holds ? '+' : '-', texts.reason);
  TellCups("%s", holds ? texts.turned_on : texts.turned_off);
  LogMessage(kLogDetail, "%s", holds ? texts.log_set : texts.log_cleared);
}

}  // namespace

void ClearPrinterStates() {
  for (const char* reason : {kInkEmptyReason, kInkLowReason, kPaperOutReason}) {
    TellCups("STATE: -%s", reason);
  }
}

void ReportPrinterConditions(bool ink_low, bool ink_empty, bool paper_out, bool alignment_needed) {
  Report(kInkEmpty, ink_empty, InkEmptyReported);
  Report(kInkLow, ink_low, InkLowReported);
  Report(kPaperOut, paper_out, PaperOutReported);
  Report(kAlignment, alignment_needed, AlignmentNeededReported);
  fflush(stderr);
}

void ReportPrinterConditions(const PrinterConditions& conditions) {
  ReportPrinterConditions(conditions.ink_low, conditions.ink_empty, conditions.paper_out,
                          conditions.alignment_needed);
}

}  // namespace zr7700
