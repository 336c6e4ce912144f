// The geometry of the printable ring.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_CLIP_GEOMETRY_H_
#define ZR7700_ENGINE_CLIP_GEOMETRY_H_

#include <span>

#include "engine/clip_buffers.h"

namespace zr7700 {

// Fills `table` (all of it: what the ring does not reach becomes 0) for the disc form, the
// printable rectangle and the hole that `variables` give. An entry that would lie outside the table
// is dropped. False (logged) when the ring is wider than `maxImageDots` or narrower than the hole;
// the table is zero then. Main thread.
bool ClipGetData(const JobVariables& variables, std::span<ClipEntry> table);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_CLIP_GEOMETRY_H_
