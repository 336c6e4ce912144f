// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/engine_entries.h"

namespace zr7700 {

EngineEntryTable engine_entries;

}  // namespace zr7700
