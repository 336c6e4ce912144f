// The latest status record, published in shared memory for other processes to read.
//
// One object, named in base/paths.h, readable by everybody. Create and close: main thread.
// Publish and read: whichever thread reads the printer's status.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_STATUS_MEMORY_H_
#define ZR7700_STATUS_STATUS_MEMORY_H_

#include <cstddef>

#include "status/status_record.h"

namespace zr7700 {

// Creates the object of `size_bytes` bytes (at most a record), or takes over one that an earlier
// job of the same user left, and fills it with zeros. False when it cannot be opened or mapped, or
// belongs to another user, who could take it away under our feet: nothing is published then.
bool CreateStatusMemory(size_t size_bytes);

// Copies the record into the object; does nothing without one.
void PublishStatus(const PrinterStatusRecord& record);

// Copies what the object holds into the record; does nothing without one.
void ReadPublishedStatus(PrinterStatusRecord& record);

// Removes the object's name, so that nobody finds it any more and it goes with this process,
// however that ends; what holds it here stays. Does nothing the second time, and needs no memory.
// Any thread, a signal handler too.
void UnlinkStatusMemory();

// Gives the object up and removes its name; does nothing the second time.
void CloseStatusMemory();

}  // namespace zr7700

#endif  // ZR7700_STATUS_STATUS_MEMORY_H_
