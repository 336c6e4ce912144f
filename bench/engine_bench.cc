// Times the open engine alone on a synthetic photograph, a full disc at 600 dpi.
//   engine_bench ROOT [PAGES]
// ROOT is the folder that holds Library/ and Users/. Prints the processor time of one page,
// document start and end included, for each family and number of passes, and the bytes that came
// out.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "zr7700/host_print_engine.h"

namespace {

constexpr uint32_t kSide = 2834;
constexpr double kHoleDots = 500;

struct Engine {
#define ZR7700_MEMBER(name, type) type name = nullptr;
  HPE_ENTRIES(ZR7700_MEMBER)
#undef ZR7700_MEMBER
};

bool LoadEngine(const std::string& path, Engine* engine) {
  void* library = dlopen(path.c_str(), RTLD_LAZY);
  if (library == nullptr) {
    std::fprintf(stderr, "engine_bench: %s\n", dlerror());
    return false;
  }
  bool complete = true;
#define ZR7700_RESOLVE(name, type)                                                   \
  engine->name = reinterpret_cast<type>(dlsym(library, #name));                      \
  if (engine->name == nullptr) {                                                     \
    std::fprintf(stderr, "engine_bench: %s has no entry %s\n", path.c_str(), #name); \
    complete = false;                                                                \
  }
  HPE_ENTRIES(ZR7700_RESOLVE)
#undef ZR7700_RESOLVE
  return complete;
}

// Whether the entry answered 0; says what it answered if it did not.
bool Succeeded(const char* entry, int32_t status) {
  if (status != HPE_OK)
    std::fprintf(stderr, "engine_bench: %s answered 0x%x\n", entry, static_cast<uint32_t>(status));
  return status == HPE_OK;
}

// Calls an entry of `engine` with `handle` and the other arguments.
#define ZR7700_CALL(entry, ...) Succeeded(#entry, engine.entry(handle, __VA_ARGS__))

uint8_t ToByte(double value) { return static_cast<uint8_t>(std::clamp(value, 0.0, 255.0)); }

// Slow waves of colour with fine grain over them, white outside of the disc's ring.
std::vector<uint8_t> MakePhotograph() {
  std::vector<uint8_t> pixels(size_t{kSide} * kSide * 4, 0);
  uint32_t random = 1;
  for (uint32_t y = 0; y < kSide; ++y)
    for (uint32_t x = 0; x < kSide; ++x) {
      uint8_t* pixel = &pixels[(size_t{y} * kSide + x) * 4];
      random = random * 1664525 + 1013904223;
      const double grain = static_cast<double>(random >> 24) / 16 - 8;
      const double u = x / 310.0;
      const double v = y / 270.0;
      pixel[0] = ToByte(128 + 110 * std::sin(u + v * 0.7) + grain);
      pixel[1] = ToByte(120 + 100 * std::sin(u * 1.3 - v) + grain);
      pixel[2] = ToByte(110 + 90 * std::cos(u * 0.6 + v * 1.9) + grain);
      const double radius = std::hypot(x - kSide / 2.0, y - kSide / 2.0);
      if (radius > kSide / 2.0 || radius < kHoleDots) pixel[0] = pixel[1] = pixel[2] = 255;
    }
  return pixels;
}

void CountBytes(void* context, uint8_t* /*data*/, uint32_t length_bytes) {
  *static_cast<uint64_t*>(context) += length_bytes;
}

double ProcessorSeconds() {
  timespec now = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

bool SetProperties(const Engine& engine, HPEHandle handle) {
  return ZR7700_CALL(SetInputResolution, 0, 600) && ZR7700_CALL(SetInputResolution, 1, 600) &&
         ZR7700_CALL(SetLeftMargin, 1916) && ZR7700_CALL(SetTopMargin, 69) &&
         ZR7700_CALL(SetPhysicalWidth, 5100) && ZR7700_CALL(SetPrintableWidth, kSide) &&
         ZR7700_CALL(SetPrintableHeight, kSide) && ZR7700_CALL(SetImageSharpeningLevel, 11);
}

// The page as the filter sends it, line by line; stops at the first entry that fails.
bool PrintPage(const Engine& engine, HPEHandle handle, const std::string& table,
               const std::vector<uint8_t>& pixels, uint64_t* bytes) {
  if (!ZR7700_CALL(HPEStartDoc, CountBytes, table.c_str(), 0, 0, HPE_START_DOC_CODE, bytes)) {
    std::fprintf(stderr, "engine_bench: the colour table is %s\n", table.c_str());
    return false;
  }
  if (!SetProperties(engine, handle)) return false;
  if (!Succeeded("HPEStartPage", engine.HPEStartPage(handle))) return false;
  for (uint32_t y = 0; y < kSide; ++y)
    if (!ZR7700_CALL(HPESendBand, 0, y, 1, kSide, kSide * 4, &pixels[size_t{y} * kSide * 4]))
      return false;
  return ZR7700_CALL(HPEEndPage, 0) && ZR7700_CALL(HPEEndDoc, 0);
}

// The same from making an instance to giving it back.
bool RunInstance(const Engine& engine, const std::string& prefix, const std::string& table,
                 const std::vector<uint8_t>& pixels, uint64_t* bytes) {
  HPEHandle const handle = engine.CreateHostPrintEngine();
  if (handle == nullptr) {
    std::fprintf(stderr, "engine_bench: CreateHostPrintEngine answered null\n");
    return false;
  }
  const char* const path = prefix.c_str();
  const bool done = ZR7700_CALL(HPEInitialize, path, path, path, path) &&
                    PrintPage(engine, handle, table, pixels, bytes);
  engine.DestroyHostPrintEngine(handle);
  return done;
}
#undef ZR7700_CALL

struct FamilyFiles {
  const char* name;
  const char* code;
  const char* table;
};
constexpr FamilyFiles kFamilies[] = {{"Heron", "he", "bsclrL"}, {"Granite", "gr", "clrPhoto"}};

// The best of several pages, for the first one also pays for loading the colour table.
bool TimeFamily(const std::string& root, const std::string& scratch, const FamilyFiles& family,
                int pages, const std::vector<uint8_t>& pixels) {
  const std::string code = std::string("tq") + family.code;
  const std::string library =
      root + "/Library/Printers/Tessary/Frameworks/" + code + "hpec.framework/" + code + "hpec";
  const std::string table = root + "/Users/Shared/Tessary/ZR7700/Frameworks/" + code + family.table;
  const std::string prefix = scratch + "/" + code;
  Engine engine;
  if (!LoadEngine(library, &engine)) return false;
  for (const int passes : {1, 2, 4, 8}) {
    std::ofstream(prefix + "cfg.ini")
        << "[Configuration]\nUseDebugSettings=1 \nColor=2 \n"
        << "[ESwathBuilder]\nSlot1NumPassesOverride=" << passes << " \n";
    double first = 0;
    double best = 1e9;
    uint64_t bytes = 0;
    for (int page = 0; page < pages; ++page) {
      const double begin = ProcessorSeconds();
      bytes = 0;
      if (!RunInstance(engine, prefix, table, pixels, &bytes)) return false;
      const double seconds = ProcessorSeconds() - begin;
      if (page == 0) first = seconds;
      best = std::min(best, seconds);
    }
    std::printf("%-8s %d passes  first %6.1f ms  best %6.1f ms  %9llu bytes\n", family.name, passes,
                first * 1e3, best * 1e3, static_cast<unsigned long long>(bytes));
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: engine_bench ROOT [PAGES]\n");
    return 2;
  }
  const int pages = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
  const std::vector<uint8_t> pixels = MakePhotograph();
  std::string scratch = std::filesystem::temp_directory_path() / "engine_bench.XXXXXX";
  if (mkdtemp(scratch.data()) == nullptr) return 1;
  bool done = true;
  for (const FamilyFiles& family : kFamilies)
    done = TimeFamily(argv[1], scratch, family, pages, pixels) && done;
  std::filesystem::remove_all(scratch);
  return done ? 0 : 1;
}
