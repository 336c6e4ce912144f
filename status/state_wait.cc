// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/state_wait.h"

#include <cmath>
#include <optional>

#include "base/log.h"
#include "platform/platform.h"
#include "status/job_cancel.h"
#include "status/status_reader.h"

namespace zr7700 {
namespace {

constexpr double kLongestSilence_s = 3.0;
constexpr int kBetweenReads_ms = 1000;

// The clock in whole seconds.
double WholeNow() { return std::floor(platform::Now()); }

// One read of a wait. The wait's result once it is decided, nothing while it goes on.
std::optional<bool> ReadOnce(PrinterStatusRecord& record, char state, bool equal,
                             double& last_status_s) {
  if (GetPrinterStatus(record)) {
    last_status_s = WholeNow();
    LogMessage(kLogDetail, "Printer State: %c", StateLetter(record));
    LogMessage(kLogDetail, "Equal: %u", equal ? 1U : 0U);
    if ((StateLetter(record) == state) == equal) return true;
  } else if (platform::Now() - last_status_s > kLongestSilence_s) {
    LogMessage(kLogDetail, "No STATUS FOR TOO LONG - GIVE UP WAITING FOR PRINTER STATE");
    return false;
  }
  return std::nullopt;
}

}  // namespace

bool WaitForPrinterState(PrinterStatusRecord& record, char state, bool equal, int limit_s) {
  LogMessage(kLogDetail, "WaitForPrinterState called Looking for %c", state);
  const double start_s = WholeNow();
  double last_status_s = start_s;
  std::optional<bool> result;
  while (!(result = ReadOnce(record, state, equal, last_status_s))) {
    if (platform::Now() - start_s > limit_s) {
      LogMessage(kLogDetail, "Printer state did not change - GIVE UP WAITING FOR PRINTER STATE");
      result = false;
      break;
    }
    if (TakeCancel()) {
      LogMessage(kLogMilestone, "WaitForPrinterState Job Cancelled");
      return false;
    }
    PauseJob(kBetweenReads_ms);
  }
  TakeCancel();
  LogMessage(kLogDetail, "WaitForPrinterState RETURNING (%u)", *result ? 1U : 0U);
  return *result;
}

}  // namespace zr7700
