// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/engine_loader.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <string_view>

#include "base/log.h"
#include "base/out_of_memory.h"
#include "engine/engine_entries.h"
#include "engine/job_variables.h"
#include "engine/library_trust.h"

namespace zr7700 {
namespace {

// Whichever family is loaded fills these; the libraries are never closed.
void* library_handles[std::size(paths::EngineFamily{}.libraries)] = {};

// Null for the letter of no cartridge.
const paths::EngineFamily* FindFamily(char letter) {
  for (const paths::EngineFamily& family : paths::kEngineFamilies) {
    if (std::string_view(family.cartridge_letters).find(letter) != std::string_view::npos) {
      return &family;
    }
  }
  return nullptr;
}

// A library that has been loaded may have left any errno.
void* Load(const char* path) {
  errno = 0;
  void* const library = dlopen(path, RTLD_LAZY);
  if (library == nullptr && errno == ENOMEM) ReportNoMemory();
  return library;
}

// Null for a library that cannot be opened, or may not be: as root the filter would do whatever its
// author wants.
void* OpenLibrary(const char* path) {
  if (geteuid() != 0) return Load(path);
  PathText real_path;
  if (BelongsToRootAlone(path, real_path)) return Load(real_path.text);
  if (errno == EPERM) {
    LogMessage(kLogDetail, "   Not loaded as root, others may write or own it: %s", path);
  }
  return nullptr;
}

template <typename Entry>
bool Resolve(Entry& slot, const char* name) {
  // A null handle would make dlsym search the whole program.
  void* const library = library_handles[paths::kEntryLibrary];
  void* const found = library != nullptr ? dlsym(library, name) : nullptr;
  slot.Set(reinterpret_cast<typename Entry::Pointer>(found));
  return !slot.IsMissing();
}

}  // namespace

bool LoadEngineForCartridge(std::span<const uint8_t> status_reply) {
  const uint8_t letter =
      status_reply.size() > kCartridgeLetterOffset ? status_reply[kCartridgeLetterOffset] : 0;
  const paths::EngineFamily* const family = FindFamily(static_cast<char>(letter));
  job_variables.isHeron = family != nullptr && family->is_heron ? 1 : 0;
  job_variables.files = family != nullptr ? family->files : paths::EngineFiles{};
  return family != nullptr && LoadEngineLibraries(*family);
}

bool LoadEngineLibraries(const paths::EngineFamily& family) {
  std::ranges::transform(family.libraries, library_handles, OpenLibrary);
  if (std::ranges::count(library_handles, nullptr) != 0) {
    LogMessage(kLogDetail, family.is_heron ? "   Failed to load Heron libraries"
                                           : "   Failed to load Granite libraries");
    return false;
  }
  LogMessage(kLogMilestone, family.is_heron ? "   Successfully loaded Heron libraries"
                                            : "   Successfully loaded Granite libraries");
  return ResolveEngineEntries();
}

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
