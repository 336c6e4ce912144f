// Loads the engine family that the ink cartridge calls for.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_ENGINE_LOADER_H_
#define ZR7700_ENGINE_ENGINE_LOADER_H_

#include <cstdint>
#include <span>

#include "base/paths.h"

namespace zr7700 {

// Where the cartridge letter stands in the printer's status reply.
inline constexpr size_t kCartridgeLetterOffset = 98;

// Picks the family by the cartridge letter of `status_reply` ('Q' and 'P': Granite, 'U' and 'V':
// Heron), writes its paths into the job variables, opens its four libraries and resolves the 22
// entries. True when all of that succeeded. Any other letter, or a reply too short to hold one,
// clears the paths and answers false without a log line. Whatever did open stays open until exit.
// Main thread, once a job.
bool LoadEngineForCartridge(std::span<const uint8_t> status_reply);

// Opens the family's four libraries, lazily bound and all of them whether or not an earlier one
// failed, then resolves the entries. True only when both succeeded. In root's process a library
// that others may write or own, or its folder, is logged and counts as missing. Main thread.
bool LoadEngineLibraries(const paths::EngineFamily& family);

// Fills the entry table from the second library that was opened. True only when all 22 names were
// found; those that were keep their slots either way. Main thread.
bool ResolveEngineEntries();

}  // namespace zr7700

#endif  // ZR7700_ENGINE_ENGINE_LOADER_H_
