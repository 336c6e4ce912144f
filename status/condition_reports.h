// Tells CUPS of the printer's conditions: printer-state reasons and error lines on standard error.
//
// Only a change is printed, and what is shown stays shown across pages. All functions: the main
// thread or the status thread, never both at once.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_CONDITION_REPORTS_H_
#define ZR7700_STATUS_CONDITION_REPORTS_H_

#include "status/printer_conditions.h"

namespace zr7700 {

// Withdraws the three reasons that an earlier job may have left set.
void ClearPrinterStates();

// Prints and logs what has changed since the last call; flushes standard error.
void ReportPrinterConditions(bool ink_low, bool ink_empty, bool paper_out, bool alignment_needed);
void ReportPrinterConditions(const PrinterConditions& conditions);

}  // namespace zr7700

#endif  // ZR7700_STATUS_CONDITION_REPORTS_H_
