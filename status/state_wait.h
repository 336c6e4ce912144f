// Waits for the printer to reach a state.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_STATE_WAIT_H_
#define ZR7700_STATUS_STATE_WAIT_H_

#include "status/status_record.h"

namespace zr7700 {

// Reads the status once a second until the printer's state letter is `state` (with `equal`) or is
// another one (without). True when that was seen; false after more than `limit_s` seconds, when the
// printer falls silent, or when the job is cancelled. `record` holds the last record read, and
// stays as it was when none came. Main thread, while no status thread runs.
bool WaitForPrinterState(PrinterStatusRecord& record, char state, bool equal, int limit_s);

}  // namespace zr7700

#endif  // ZR7700_STATUS_STATE_WAIT_H_
