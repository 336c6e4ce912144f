// The job's raster stream, readable until a cancel ends it.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DRIVER_RASTER_INPUT_H_
#define ZR7700_DRIVER_RASTER_INPUT_H_

#include <cups/raster.h>

namespace zr7700 {

// Opens the raster in the file at `path`, or on standard input when `path` is null. A file that
// cannot be opened is logged and answers false. `raster` may be null even so: a stream that holds
// no raster, which reads as one without pages. A requested cancel makes every read of the stream
// fail, a waiting one at once. Stream and file stay open until exit. Main thread.
bool OpenRaster(const char* path, cups_raster_t*& raster);

}  // namespace zr7700

#endif  // ZR7700_DRIVER_RASTER_INPUT_H_
