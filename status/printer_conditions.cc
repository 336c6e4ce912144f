// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/printer_conditions.h"

#include "status/cartridges.h"
#include "status/status_reader.h"

namespace zr7700 {
namespace {

// From the last record of a printer that was not busy.
uint32_t PrinterErrorWord = 0;

// Every record that was read has a start mark.
bool IsFilled(const PrinterStatusRecord& record) { return record.front() != 0; }

}  // namespace

uint32_t ReadErrorWord(PrinterStatusRecord& record) {
  record.fill(0);
  if (GetPrinterStatus(record) && StateLetter(record) != kStateBusy) {
    PrinterErrorWord = ErrorWord(record);
  }
  return PrinterErrorWord;
}

PrinterConditions ReadConditions() {
  PrinterStatusRecord record;
  PrinterConditions conditions;
  conditions.error_word = ReadErrorWord(record);
  conditions.has_record = IsFilled(record);
  conditions.alignment_needed = AlignmentFlag(record) != 0;
  conditions.any = conditions.error_word != 0 || conditions.alignment_needed;
  conditions.paper_out = (conditions.error_word & kErrorBinEmpty) == kErrorBinEmpty;
  if ((conditions.error_word & kErrorInk) != 0) {
    conditions.ink_empty = IsInkEmpty(record);
    conditions.ink_low = !conditions.ink_empty;
  }
  return conditions;
}

}  // namespace zr7700
