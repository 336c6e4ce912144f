// Another filter of the system in the place of this process.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PAGE_FITTER_SYSTEM_FILTER_H_
#define ZR7700_PAGE_FITTER_SYSTEM_FILTER_H_

#include <string>

#include "disc/filter_arguments.h"

namespace zr7700 {

// Becomes the system's filter `name`, with the job's options and `more_options` behind them.
// Returns only when it cannot be started: the exit status 1, with a sentence told. Main thread.
int BecomeSystemFilter(const FilterArguments& arguments, const char* name,
                       const std::string& more_options);

}  // namespace zr7700

#endif  // ZR7700_PAGE_FITTER_SYSTEM_FILTER_H_
