// The picture filter's job: every picture of the document on a page of its own.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_PICTURE_JOB_H_
#define ZR7700_PICTURE_FILTER_PICTURE_JOB_H_

#include "disc/filter_arguments.h"

namespace zr7700 {

// Runs the whole job and returns the exit status: 0 when every picture of the document has been
// handed on, as often as it is to be, 1 otherwise, with one sentence told to the person. A page
// goes on only when all of its picture has been read; pages before a damaged one have gone on. Main
// thread.
int RunPictureJob(const FilterArguments& arguments);

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_PICTURE_JOB_H_
