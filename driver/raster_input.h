// The job's raster stream, readable until a cancel ends it.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DRIVER_RASTER_INPUT_H_
#define ZR7700_DRIVER_RASTER_INPUT_H_

#include <memory>

#include "disc/raster_stream.h"

namespace zr7700 {

// Opens the raster in the file at `path`, or on standard input when `path` is null. Null, logged,
// for a file that cannot be opened. A stream that holds no raster is one without pages. A requested
// cancel ends a read that waits for data at once, and fails all that would need more of it. The
// file stays open until exit. Main thread.
std::unique_ptr<RasterStream> OpenRaster(const char* path);

}  // namespace zr7700

#endif  // ZR7700_DRIVER_RASTER_INPUT_H_
