// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/engine_loader.h"

#include <dlfcn.h>

#include "base/log.h"
#include "base/paths.h"
#include "engine/engine_entries.h"
#include "engine/job_variables.h"

namespace zr7700 {
namespace {

// Whichever family is loaded fills these; the libraries are never closed.
void* libHandleFlib = nullptr;
void* libHandleHpec = nullptr;
void* libHandleHpeh = nullptr;
void* libHandleHpep = nullptr;

void SetFamilyFields(const paths::EngineFamily& family, bool is_heron) {
  job_variables.isHeron = is_heron ? 1 : 0;
  job_variables.enginePath1 = family.engine_path1;
  job_variables.enginePath2 = family.engine_path2;
  job_variables.enginePath3 = family.engine_path3;
  job_variables.colorTableStandard = family.color_table_standard;
  job_variables.colorTablePhoto = family.color_table_photo;
  job_variables.colorTablePhotoGlossy = family.color_table_photo_glossy;
  job_variables.engineIniPath = family.engine_ini;
  job_variables.enginePath4 = family.engine_path4;
}

bool LoadLibraries(const paths::EngineFamily& family) {
  libHandleFlib = dlopen(family.flib, RTLD_LAZY);
  libHandleHpec = dlopen(family.hpec, RTLD_LAZY);
  libHandleHpeh = dlopen(family.hpeh, RTLD_LAZY);
  libHandleHpep = dlopen(family.hpep, RTLD_LAZY);
  if (libHandleFlib == nullptr || libHandleHpec == nullptr || libHandleHpeh == nullptr ||
      libHandleHpep == nullptr) {
    LogMessage(kLogDetail, "   Failed to load %s libraries", family.name);
    return false;
  }
  LogMessage(kLogMilestone, "   Successfully loaded %s libraries", family.name);
  return ResolveEngineEntries();
}

template <typename Entry>
bool Resolve(Entry& slot, const char* name) {
  // A null handle would make dlsym search the whole program.
  void* const found = libHandleHpec != nullptr ? dlsym(libHandleHpec, name) : nullptr;
  slot = reinterpret_cast<Entry>(found);
  return slot != nullptr;
}

}  // namespace

bool LoadEngineForCartridge(std::span<const uint8_t> status_reply) {
  const uint8_t letter =
      status_reply.size() > kCartridgeLetterOffset ? status_reply[kCartridgeLetterOffset] : 0;
  switch (letter) {
    case 'Q':
    case 'P':
      SetFamilyFields(paths::kGranite, false);
      return LoadGraniteLibraries();
    case 'U':
    case 'V':
      SetFamilyFields(paths::kHeron, true);
      return LoadHeronLibraries();
    default:
      SetFamilyFields(paths::EngineFamily{}, false);
      return false;
  }
}

bool LoadHeronLibraries() { return LoadLibraries(paths::kHeron); }

bool LoadGraniteLibraries() { return LoadLibraries(paths::kGranite); }

bool ResolveEngineEntries() {
  bool all_found = true;
#define ZR7700_RESOLVE(name, type) all_found &= Resolve(engine_entries.name, #name);
  HPE_ENTRIES(ZR7700_RESOLVE)
#undef ZR7700_RESOLVE
  LogMessage(kLogMilestone, all_found ? "   Successfully loaded HPE functions"
                                      : "   Failed to load HPE functions");
  return all_found;
}

}  // namespace zr7700
