// The conditions that a status record stands for.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_PRINTER_CONDITIONS_H_
#define ZR7700_STATUS_PRINTER_CONDITIONS_H_

#include <cstdint>

#include "status/status_record.h"

namespace zr7700 {

struct PrinterConditions {
  bool ink_low = false;
  bool ink_empty = false;
  bool paper_out = false;  // the disc input bin is empty
  bool alignment_needed = false;
  uint32_t error_word = 0;
  // The printer reports an error, one of the above or another, or wants to be aligned.
  bool any = false;
  // They come from a record just read; else it is what the last one left.
  bool has_record = false;
};

// Reads a record into `record`, which is zero when none came, and returns the printer's error word:
// that of this record or, when none came or the printer was busy, that of the last one that
// counted. The main thread or the status thread, never both at once.
uint32_t ReadErrorWord(PrinterStatusRecord& record);

// Reads the printer's status and tells what it means. Threads as ReadErrorWord.
PrinterConditions ReadConditions();

}  // namespace zr7700

#endif  // ZR7700_STATUS_PRINTER_CONDITIONS_H_
