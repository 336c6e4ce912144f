// Whether a library may be loaded into root's process: nobody else may be able to change what it
// is.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_LIBRARY_TRUST_H_
#define ZR7700_ENGINE_LIBRARY_TRUST_H_

#include "base/trusted_links.h"

namespace zr7700 {

// Sets `real_path` to the file to which `path` leads, with all symbolic links followed. True when
// file and folder belong to root and nobody else may write to them, and nobody else can put another
// in the place of a folder above. False, with errno set, also for a file that is not there. Any
// thread.
bool BelongsToRootAlone(const char* path, PathText& real_path);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_LIBRARY_TRUST_H_
