// The left margin of a page.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_MARGINS_H_
#define ZR7700_ENGINE_MARGINS_H_

#include <cstdint>

#include "engine/job_variables.h"

namespace zr7700 {

// The left margin in dots at the page's resolution, 0 or more: the printer's own margin with the
// offset that the settings give for the engine family and the medium. Logs what it finds. Main
// thread.
int32_t ripGetMarginWidth(const JobVariables& variables);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_MARGINS_H_
