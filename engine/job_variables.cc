// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/job_variables.h"

namespace zr7700 {

JobVariables job_variables = {};
HPEHandle engineHandle = nullptr;

}  // namespace zr7700
