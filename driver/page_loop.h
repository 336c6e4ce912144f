// The job's pages, one after another.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DRIVER_PAGE_LOOP_H_
#define ZR7700_DRIVER_PAGE_LOOP_H_

#include "disc/raster_stream.h"

namespace zr7700 {

enum class LoopEnd {
  kFinished,  // no further page, a cancel or a failure: the job ends in order
  kAbandoned  // the printer's check before a page failed: the job ends at once
};

// Prints every page of `raster` and counts the pages begun in `page_count`. `suppress_utility`
// keeps the status thread from telling the printer utility. Main thread, once a job, after the
// document is set up.
LoopEnd PrintPages(RasterStream& raster, bool suppress_utility, int& page_count);

}  // namespace zr7700

#endif  // ZR7700_DRIVER_PAGE_LOOP_H_
