// Reads the printer's status records: drops stale ones, realigns a stream that begins in the middle
// of a record, and hands on one valid record. The printer sends records without being asked.
//
// All functions: the main thread or the status thread, never both at once (the main thread reads no
// status while the status thread runs).
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_STATUS_READER_H_
#define ZR7700_STATUS_STATUS_READER_H_

#include "status/status_record.h"

namespace zr7700 {

// Reads one valid record into `record` and publishes it in the shared status memory. False, with
// `record` as it was, when none came within 2 to 3 seconds, or within half a second after a cancel.
bool GetPrinterStatus(PrinterStatusRecord& record);

// The same without publishing.
bool ReadPrinterStatus(PrinterStatusRecord& record);

// Drains the records that have piled up since the last one was read: 16 a second, at most 50. False
// when the channel ran dry before that.
bool ClearBackChannelBuffer();

}  // namespace zr7700

#endif  // ZR7700_STATUS_STATUS_READER_H_
