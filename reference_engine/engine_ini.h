// The engine's reading of its ini file.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_ENGINE_INI_H_
#define ZR7700_REFERENCE_ENGINE_ENGINE_INI_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zr7700::reference_engine {

// What the file asks for; 0 (or -1 for the directions, where 0 is a choice) means that it does not
// say or says something that the engine does not know.
struct EngineIni {
  // [Configuration]
  std::optional<int> printer;  // "Printer", for the caller to judge; -1 for what is no number
  int color = 0;               // "Color": 1 standard, 2 photo
  // [ESwathBuilder]
  int passes = 0;            // "Slot1NumPassesOverride": 1, 2, 4 or 8
  int slot1_direction = -1;  // "Slot1PrintDirection": 0 both, 1 reverse only, 2 forward only
};

// Reads "key=value" lines under "[section]" lines. Blanks around values are ignored; of a key that
// occurs several times the last one counts. The overrides under [ESwathBuilder] and "Color" count
// only if "UseDebugSettings" is 1.
EngineIni ParseEngineIni(std::string_view text);

// The same for the file `path`; a missing file asks for nothing. Answers kOk, or kBadConfiguration
// when there is something that is no file of at most 64 KiB that the engine may read; `ini` is then
// unchanged.
int32_t ReadEngineIni(const std::string& path, EngineIni* ini);

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_ENGINE_INI_H_
