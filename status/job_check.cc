// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/job_check.h"

#include "base/cancel_signal.h"
#include "base/log.h"
#include "base/standard_error.h"
#include "engine/engine_loader.h"
#include "engine/job_variables.h"
#include "status/cartridges.h"
#include "status/job_cancel.h"
#include "status/status_reader.h"
#include "status/user_texts.h"
#include "status/utility_notices.h"

namespace zr7700 {
namespace {

constexpr int kFirstCheckRetries = 15;
constexpr int kPageRetries = 5;
constexpr int kBetweenPasses_ms = 1000;

// What one call of the check knows from pass to pass.
struct Check {
  int retries;
  const Cartridge* family = &kStandardCartridge;
  bool got_status = false;
  bool in_error = false;  // this pass
  bool told_user = false;
  bool told_utility = false;
  PrinterStatusRecord record = {};
};

void ReportError(Check& check, const char* line) {
  TellCups("%s", line);
  check.told_user = true;
  check.in_error = true;
}

void TakePrinterData(const PrinterStatusRecord& record) {
  job_variables.alignmentValue6 = AlignmentValue6(record);
  job_variables.alignmentValue14 = AlignmentValue14(record);
  job_variables.statusLetterReady = IsStatusLetterReady(record) ? 1 : 0;
}

void ReportCartridge(Check& check, const char* log_line, const char* user_line) {
  LogMessage(kLogMilestone, "%s", log_line);
  ReportError(check, user_line);
  LogMessage(kLogDetail, "     Cartridge Error. Tell user.");
}

void CheckCartridge(Check& check) {
  LogMessage(kLogDetail, "     Checking Cartridges...");
  const CartridgeResult result = CheckCartridges(check.record);
  LogMessage(kLogDetail, "     Checking Cartridges Finished...");
  LogMessage(kLogDetail, "     Cart info %X", static_cast<uint8_t>(CartridgeLetter(check.record)));
  switch (result.check) {
    case CartridgeCheck::kOk:
      check.family = result.cartridge;
      break;
    case CartridgeCheck::kInvalid:
      ReportCartridge(check, "     Invalid Cart", ZR7700_RECOVERABLE ZR7700_TEXT_INVALID_CARTRIDGE);
      break;
    case CartridgeCheck::kMissing:
      ReportCartridge(check, "     Missing Cart", ZR7700_RECOVERABLE ZR7700_TEXT_MISSING_CARTRIDGE);
      break;
  }
}

void CheckAlignment(Check& check) {
  if (job_variables.alignmentSkip != 0) return;
  LogMessage(kLogDetail, "     Checking Alignment");
  if (AlignmentFlag(check.record) != 1) return;
  LogMessage(kLogMilestone, "     Cart needs align");
  ReportError(check, ZR7700_RECOVERABLE ZR7700_TEXT_ALIGN);
  LogMessage(kLogDetail, "     Alignment Needed. Tell user.");
}

// The ink left in percent. The difference wraps when more has been used than the low limit, and the
// wrapped value is what is shown.
int InkPercent(uint32_t limit_low, uint32_t current) {
  const double percent = (limit_low - current) * 100.0 / limit_low + 0.5;
  return static_cast<int16_t>(static_cast<int64_t>(percent));
}

void CheckInk(Check& check) {
  LogMessage(kLogDetail, "     Checking Ink");
  const uint32_t low = check.family->ink_limit_low;
  const uint32_t high = check.family->ink_limit_high;
  job_variables.inkLimitLow = low;
  job_variables.inkLimitHigh = high;
  const uint32_t current = LargestInkCount(check.record);
  LogMessage(kLogDetail, "     Checking Color Ink Level... ");
  LogMessage(kLogDetail, "          Current: %u", current);
  LogMessage(kLogDetail, "          Max %u", low);
  LogMessage(kLogDetail, "          Final %u", high);
  LogMessage(kLogDetail, "          Percent %i", InkPercent(low, current));
  if (current <= high) return;
  LogMessage(kLogMilestone, "     Cart out of ink");
  ReportError(check, ZR7700_UNRECOVERABLE ZR7700_TEXT_OUT_OF_INK);
  LogMessage(kLogDetail, "     Final Ink Empty Error.");
}

void RunChecks(Check& check) {
  check.got_status = true;
  TakePrinterData(check.record);
  CheckCartridge(check);
  if (!TakeCancel()) CheckAlignment(check);
  if (!TakeCancel()) CheckInk(check);
}

// The utility is told once a call, but asked again as long as it cannot be reached.
void TellUtility(Check& check) {
  LogMessage(kLogMilestone, "     #### In Error Retry");
  if (check.told_utility || job_variables.SuppressStartingUtilityOnError != 0) return;
  check.told_utility = NotifyPrinterError(false) != kNoticeNotReachable;
}

// Withdraws every message of this check, whichever was shown.
void ClearErrors() {
  LogMessage(kLogMilestone, "     clear all errors");
  TellCups(ZR7700_RECOVERED ZR7700_TEXT_NO_COMMUNICATION);
  TellCups(ZR7700_RECOVERED ZR7700_TEXT_ALIGN);
  TellCups(ZR7700_RECOVERED ZR7700_TEXT_OUT_OF_INK);
  TellCups(ZR7700_RECOVERED ZR7700_TEXT_INVALID_CARTRIDGE);
  TellCups(ZR7700_RECOVERED ZR7700_TEXT_MISSING_CARTRIDGE);
}

bool LoadEngine(const PrinterStatusRecord& record) {
  // Threads that a library starts inherit the mask, so that the signal always finds this thread.
  const CancelBlock block;
  if (LoadEngineForCartridge(record)) return true;
  LogMessage(kLogDetail, "Error loading cartridge based library.");
  return false;
}

bool FinishCheck(const Check& check, int page) {
  if (check.told_user) ClearErrors();
  if (!check.got_status) {
    LogMessage(kLogMilestone, "     no comm");
    TellCups(ZR7700_RECOVERABLE ZR7700_TEXT_NO_COMMUNICATION);
    return false;
  }
  return page != 0 || LoadEngine(check.record);
}

// Counts a reading that failed; false, logged, when it was one too many. One that a cancel has cut
// short does not count.
bool TakeRetry(Check& check) {
  if (CancelRequested() || check.retries-- > 0) return true;
  LogMessage(kLogMilestone, "     StartOfPageJobCheck get status retries failed");
  return false;
}

}  // namespace

bool StartOfPageJobCheck(int page) {
  LogMessage(kLogMilestone, "     StartOfPageJobCheck");
  Check check = {.retries = page == 0 ? kFirstCheckRetries : kPageRetries};
  for (;; PauseJob(kBetweenPasses_ms)) {
    check.in_error = false;
    if (TakeCancel()) {
      LogMessage(kLogMilestone, "     Job Cancelled");
      return false;
    }
    if (!GetPrinterStatus(check.record)) {
      if (!TakeRetry(check)) return false;
      continue;
    }
    RunChecks(check);
    if (!check.in_error) {
      LogMessage(kLogMilestone, "     #### NOT in Error Continue");
      return FinishCheck(check, page);
    }
    TellUtility(check);
  }
}

}  // namespace zr7700
