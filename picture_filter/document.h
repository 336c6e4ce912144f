// The document of a job as a file that can be read from the start again.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_DOCUMENT_H_
#define ZR7700_PICTURE_FILTER_DOCUMENT_H_

#include <cstdio>
#include <memory>

#include "disc/filter_arguments.h"

namespace zr7700 {

using DocumentFile = std::unique_ptr<FILE, int (*)(FILE*)>;

// Standard input is written to a file in $TMPDIR that has no name any more. Null with a sentence
// told to the person when the document cannot be read or there is no room for it. Main thread.
DocumentFile OpenDocumentFile(const FilterArguments& arguments);

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_DOCUMENT_H_
