// The loader against a dynamic linker of the test's own: the build has the linker send its calls of
// dlopen and dlsym to the two functions below.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/engine_loader.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <set>

#include "base/paths.h"
#include "engine/engine_entries.h"
#include "engine/job_variables.h"
#include "tests/support/job_test.h"

namespace zr7700 {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

// What the test's dynamic linker has seen and what it is to do.
struct Linker {
  std::vector<std::string> opened;
  std::vector<int> flags;
  std::vector<std::string> looked_up;
  std::set<std::string> missing;  // libraries and entries
  std::vector<void*> searched;
};
Linker linker;

// A library's handle is the address of its place in the order of opening.
std::array<char, 64> handles;
int32_t SomeEntry() { return 77; }

}  // namespace

extern "C" void* __wrap_dlopen(const char* path, int flags);
extern "C" void* __wrap_dlsym(void* handle, const char* name);
extern "C" uid_t __wrap_geteuid();

// The paths are not those of files, which root's process would want to see first.
extern "C" uid_t __wrap_geteuid() { return 1000; }

extern "C" void* __wrap_dlopen(const char* path, int flags) {
  linker.opened.emplace_back(path);
  linker.flags.push_back(flags);
  return linker.missing.contains(path) ? nullptr : &handles[linker.opened.size() - 1];
}

extern "C" void* __wrap_dlsym(void* handle, const char* name) {
  linker.looked_up.emplace_back(name);
  linker.searched.push_back(handle);
  return linker.missing.contains(name) ? nullptr : reinterpret_cast<void*>(&SomeEntry);
}

namespace {

constexpr char kLibraries[] = ZR7700_ROOT "/Library/Printers/Tessary/Frameworks/";
constexpr char kShared[] = ZR7700_ROOT "/Users/Shared/Tessary/ZR7700/Frameworks/";

std::vector<std::string> LibrariesOf(const std::string& family) {
  std::vector<std::string> paths;
  for (const char* const part : {"flib", "hpec", "hpeh", "hpep"}) {
    paths.push_back(kLibraries + family + part + ".framework/" + family + part);
  }
  return paths;
}

const char* const kEntries[] = {"CreateHostPrintEngine",
                                "HPEInitialize",
                                "HPEStartDoc",
                                "HPEStartPage",
                                "HPESendBand",
                                "HPEEndPage",
                                "HPEEndDoc",
                                "DestroyHostPrintEngine",
                                "SetInputResolution",
                                "SetLeftMargin",
                                "SetTopMargin",
                                "SetPrintableWidth",
                                "SetPrintableHeight",
                                "SetPhysicalWidth",
                                "SetInstalledCartridge",
                                "SetHPERasterFormat",
                                "SetAlignmentInformation",
                                "SetPageIntent",
                                "SetMediaType",
                                "SetOutputPrintQuality",
                                "SetPaperTray",
                                "SetImageSharpeningLevel"};

class EngineLoaderTest : public test::JobTest {
 protected:
  EngineLoaderTest() { linker = Linker{}; }

  // A status reply with the letter at its place, 98 bytes in.
  bool Load(char letter) {
    std::array<uint8_t, 144> reply = {};
    reply.fill('Q');
    reply[98] = static_cast<uint8_t>(letter);
    return LoadEngineForCartridge(reply);
  }

  static std::vector<std::string> FamilyFields() {
    const JobVariables& v = job_variables;
    return {v.files.enginePath1,        v.files.enginePath2,     v.files.enginePath3,
            v.files.colorTableStandard, v.files.colorTablePhoto, v.files.colorTablePhotoGlossy,
            v.files.engineIniPath,      v.files.enginePath4};
  }
};

TEST_F(EngineLoaderTest, GraniteCartridges) {
  for (const char letter : {'Q', 'P'}) {
    linker = Linker{};
    log_.Clear();
    job_variables.isHeron = 1;
    EXPECT_TRUE(Load(letter));
    EXPECT_EQ(job_variables.isHeron, 0);
    EXPECT_EQ(linker.opened, LibrariesOf("tqgr"));
    const std::string libraries = kLibraries, shared = kShared;
    EXPECT_THAT(FamilyFields(),
                ElementsAre(libraries + "tqgr", libraries + "tqgr", libraries + "tqgr",
                            shared + "tqgrclr1", shared + "tqgrclrPhoto",
                            shared + "tqgrclrPhGlossy", shared + "tqgrcfg.ini", shared + "tqgr"));
    EXPECT_THAT(LogLines(), ElementsAre("   Successfully loaded Granite libraries",
                                        "   Successfully loaded HPE functions"));
  }
}

TEST_F(EngineLoaderTest, HeronCartridges) {
  for (const char letter : {'U', 'V'}) {
    linker = Linker{};
    log_.Clear();
    job_variables.isHeron = 0;
    EXPECT_TRUE(Load(letter));
    EXPECT_EQ(job_variables.isHeron, 1);
    EXPECT_EQ(linker.opened, LibrariesOf("tqhe"));
    const std::string shared = kShared;
    EXPECT_THAT(FamilyFields(),
                ElementsAre(shared + "tqhe", shared + "tqhe", shared + "tqhe",
                            shared + "tqhebsclr1", shared + "tqhebsclrL", shared + "tqhebsclrL",
                            shared + "tqhecfg.ini", shared + "tqhe"));
    EXPECT_THAT(LogLines(), ElementsAre("   Successfully loaded Heron libraries",
                                        "   Successfully loaded HPE functions"));
  }
}

TEST_F(EngineLoaderTest, AnyOtherLetterSelectsNoFamily) {
  for (int letter = 0; letter < 256; ++letter) {
    if (std::string("QPUV").find(static_cast<char>(letter)) != std::string::npos) continue;
    job_variables.isHeron = 1;
    job_variables.files.enginePath1 = job_variables.files.enginePath4 =
        job_variables.files.engineIniPath = "old";
    EXPECT_FALSE(Load(static_cast<char>(letter))) << letter;
    EXPECT_EQ(job_variables.isHeron, 0);
    EXPECT_EQ(job_variables.files.enginePath1, nullptr);
    EXPECT_EQ(job_variables.files.enginePath2, nullptr);
    EXPECT_EQ(job_variables.files.enginePath3, nullptr);
    EXPECT_EQ(job_variables.files.enginePath4, nullptr);
    EXPECT_EQ(job_variables.files.colorTableStandard, nullptr);
    EXPECT_EQ(job_variables.files.colorTablePhoto, nullptr);
    EXPECT_EQ(job_variables.files.colorTablePhotoGlossy, nullptr);
    EXPECT_EQ(job_variables.files.engineIniPath, nullptr);
  }
  EXPECT_THAT(linker.opened, IsEmpty());
  EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(EngineLoaderTest, ReplyTooShortForALetterSelectsNoFamily) {
  const std::vector<uint8_t> reply(98, 'Q');
  EXPECT_FALSE(LoadEngineForCartridge(reply));
  EXPECT_FALSE(LoadEngineForCartridge({}));
  EXPECT_THAT(linker.opened, IsEmpty());
}

TEST_F(EngineLoaderTest, LibrariesAreBoundLazilyAndNothingMore) {
  EXPECT_TRUE(Load('Q'));
  EXPECT_THAT(linker.flags, ElementsAre(RTLD_LAZY, RTLD_LAZY, RTLD_LAZY, RTLD_LAZY));
}

TEST_F(EngineLoaderTest, AllFourLibrariesAreTriedWhicheverIsMissing) {
  for (const std::string family : {"tqhe", "tqgr"}) {
    for (size_t missing = 0; missing < 4; ++missing) {
      linker = Linker{};
      log_.Clear();
      linker.missing = {LibrariesOf(family)[missing]};
      EXPECT_FALSE(LoadEngineLibraries(paths::kEngineFamilies[family == "tqhe" ? 1 : 0]));
      EXPECT_EQ(linker.opened, LibrariesOf(family));
      EXPECT_THAT(linker.looked_up, IsEmpty());
      EXPECT_THAT(LogLines(),
                  ElementsAre(family == "tqhe" ? "   Failed to load Heron libraries"
                                               : "   Failed to load Granite libraries"));
    }
  }
}

TEST_F(EngineLoaderTest, MissingLibraryKeepsTheFamilysFields) {
  linker.missing = {LibrariesOf("tqhe")[0]};
  EXPECT_FALSE(Load('V'));
  EXPECT_EQ(job_variables.isHeron, 1);
  EXPECT_EQ(job_variables.files.engineIniPath, std::string(kShared) + "tqhecfg.ini");
}

TEST_F(EngineLoaderTest, EntriesAreLookedUpInTheSecondLibraryInOrder) {
  EXPECT_TRUE(Load('Q'));
  EXPECT_THAT(linker.looked_up, ElementsAreArray(kEntries));
  EXPECT_THAT(linker.searched, testing::Each(&handles[1]));
}

TEST_F(EngineLoaderTest, EachMissingEntryFailsButTheOthersAreStored) {
  for (const char* const missing : kEntries) {
    linker = Linker{};
    log_.Clear();
    linker.missing = {missing};
    EXPECT_FALSE(Load('P')) << missing;
    EXPECT_THAT(linker.looked_up, ElementsAreArray(kEntries));
    EXPECT_THAT(LogLines(), ElementsAre("   Successfully loaded Granite libraries",
                                        "   Failed to load HPE functions"));
    size_t filled = 0;
#define ZR7700_COUNT(name, type)                       \
  filled += engine_entries.name.IsMissing() ? 0U : 1U; \
  EXPECT_EQ(engine_entries.name.IsMissing(), std::string(missing) == #name);
    HPE_ENTRIES(ZR7700_COUNT)
#undef ZR7700_COUNT
    EXPECT_EQ(filled, 21u) << missing;
  }
}

TEST_F(EngineLoaderTest, LogLinesHaveTheirLevels) {
  const test::LogCapture quiet(2);
  EXPECT_TRUE(Load('Q'));
  linker.missing = {"SetPaperTray"};
  EXPECT_FALSE(Load('Q'));
  EXPECT_THAT(quiet.Lines(), IsEmpty());
  linker.opened.clear();
  linker.missing = {LibrariesOf("tqgr")[3]};
  EXPECT_FALSE(Load('Q'));
  EXPECT_THAT(quiet.Lines(), ElementsAre("   Failed to load Granite libraries"));
}

}  // namespace
}  // namespace zr7700
