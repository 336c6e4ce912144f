// The engine's 22 entries as the filter calls them, each behind a guard.
//
// The guard tests its slot at every call. While the slot is null nothing is called, and the answer
// is HPE_ENTRY_MISSING (2), or the null handle for CreateHostPrintEngine; otherwise the arguments
// and the entry's result are passed on unchanged. zr7700/host_print_engine.h says what each entry
// does. Main thread.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_ENGINE_ENTRIES_H_
#define ZR7700_ENGINE_ENGINE_ENTRIES_H_

#include <cstdint>
#include <type_traits>

#include "zr7700/host_print_engine.h"

namespace zr7700 {

template <typename EntryPointer>
class EngineEntry;

// One slot with its guard; empty until a library has been searched.
template <typename Result, typename... Arguments>
class EngineEntry<Result (*)(Arguments...)> {
 public:
  using Pointer = Result (*)(Arguments...);

  void Set(Pointer entry) { entry_ = entry; }
  bool IsMissing() const { return entry_ == nullptr; }

  Result operator()(Arguments... arguments) const {
    if (entry_ != nullptr) return entry_(arguments...);
    if constexpr (std::is_same_v<Result, int32_t>) return HPE_ENTRY_MISSING;
    return Result();
  }

 private:
  Pointer entry_ = nullptr;
};

// One slot per entry, named after it.
struct EngineEntryTable {
#define ZR7700_SLOT(name, type) EngineEntry<type> name;
  HPE_ENTRIES(ZR7700_SLOT)
#undef ZR7700_SLOT
};

// Filled by ResolveEngineEntries, constant afterwards.
extern EngineEntryTable engine_entries;

}  // namespace zr7700

#endif  // ZR7700_ENGINE_ENGINE_ENTRIES_H_
