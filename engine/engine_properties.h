// Pushes the job's state into the engine before a page is opened.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_ENGINE_PROPERTIES_H_
#define ZR7700_ENGINE_ENGINE_PROPERTIES_H_

#include "engine/job_variables.h"

namespace zr7700 {

// Sets print direction (through the engine's ini file), resolution, margins, widths and height,
// cartridges, media, quality, tray, intent, sharpening, raster format and alignment, each with its
// log line. Every step runs even after a failure. True when every checked call answered 0; the ini
// file and the alignment do not count. `variables.horzResolution` is not 0. Main thread.
bool SetHPEProperties(const JobVariables& variables);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_ENGINE_PROPERTIES_H_
