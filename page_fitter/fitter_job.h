// The page fitter's job: every page of the document onto the disc's page, one after another.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PAGE_FITTER_FITTER_JOB_H_
#define ZR7700_PAGE_FITTER_FITTER_JOB_H_

#include "disc/filter_arguments.h"

namespace zr7700 {

// Runs the whole job and returns the exit status: 0 when every page of the document has been handed
// on, 1 otherwise, with one sentence told to the person. A page goes on only when all of it has
// come; pages before a damaged one have gone on. Main thread.
int RunFitterJob(const FilterArguments& arguments);

}  // namespace zr7700

#endif  // ZR7700_PAGE_FITTER_FITTER_JOB_H_
