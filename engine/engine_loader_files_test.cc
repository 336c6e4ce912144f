// The loader and the system's own dynamic linker, on small libraries in a folder of the test's.
// Built with "." as the root of the fixed paths, so that a case chooses the root by its working
// directory; each case runs in a process of its own, since nothing that was loaded is ever
// unloaded.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <functional>

#include "engine/engine_entries.h"
#include "engine/engine_loader.h"
#include "engine/job_variables.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

const char* const kParts[] = {"flib", "hpec", "hpeh", "hpep"};

class EngineLoaderFilesTest : public testing::Test {
 protected:
  void Install(const std::string& family, const std::string& engine_library,
               const std::string& left_out = "") {
    for (const std::string part : kParts) {
      if (part == left_out) continue;
      const std::string name = family + part;
      const std::string source = part == "hpec" ? engine_library : ZR7700_TEST_EMPTY_LIBRARY;
      root_.WriteFile("Library/Printers/Tessary/Frameworks/" + name + ".framework/" + name,
                      test::ReadFile(source));
    }
  }

  // Loads for the cartridge in a child process and there runs the checks on the answer.
  void LoadAndCheck(char letter, const std::function<void(bool)>& checks) {
    const auto child = [&] {
      ASSERT_EQ(chdir(root_.path().c_str()), 0);
      std::array<uint8_t, 144> reply = {};
      reply[98] = static_cast<uint8_t>(letter);
      checks(LoadEngineForCartridge(reply));
      exit(HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0), "");
  }

  test::TemporaryFolder root_;
};

TEST_F(EngineLoaderFilesTest, EntriesAreThoseOfTheFamilysSecondLibrary) {
  Install("tqhe", ZR7700_TEST_ENGINE_LIBRARY);
  LoadAndCheck('U', [](bool loaded) {
    EXPECT_TRUE(loaded);
    // The library's entry n answers 100 + n.
    EXPECT_EQ(engine_entries.HPEInitialize(nullptr, "", "", "", ""), 102);
    EXPECT_EQ(engine_entries.HPEEndDoc(nullptr, 0), 107);
    EXPECT_EQ(engine_entries.SetImageSharpeningLevel(nullptr, 1), 122);
    EXPECT_STREQ(job_variables.files.enginePath1, "./Users/Shared/Tessary/ZR7700/Frameworks/tqhe");
  });
}

TEST_F(EngineLoaderFilesTest, GraniteIsLoadedFromItsOwnFiles) {
  Install("tqgr", ZR7700_TEST_ENGINE_LIBRARY);
  LoadAndCheck('Q', [](bool loaded) {
    EXPECT_TRUE(loaded);
    EXPECT_EQ(engine_entries.HPEStartPage(nullptr), 104);
    EXPECT_STREQ(job_variables.files.enginePath1, "./Library/Printers/Tessary/Frameworks/tqgr");
  });
  LoadAndCheck('U', [](bool loaded) { EXPECT_FALSE(loaded); });
}

TEST_F(EngineLoaderFilesTest, EachMissingLibraryFailsTheLoad) {
  for (const char* const part : kParts) {
    const std::string part_name = part;
    std::filesystem::remove_all(root_.path() / "Library");
    Install("tqgr", ZR7700_TEST_ENGINE_LIBRARY, part_name);
    LoadAndCheck('P', [](bool loaded) {
      EXPECT_FALSE(loaded);
      EXPECT_EQ(engine_entries.HPEStartPage(nullptr), 2);
    });
  }
}

TEST_F(EngineLoaderFilesTest, LibraryWithoutOneEntryFailsButKeepsTheOthers) {
  Install("tqhe", ZR7700_TEST_ENGINE_LIBRARY_WITHOUT_TRAY);
  LoadAndCheck('V', [](bool loaded) {
    EXPECT_FALSE(loaded);
    EXPECT_EQ(engine_entries.SetPaperTray(nullptr, 2), 2);
    EXPECT_EQ(engine_entries.SetMediaType(nullptr, 1), 119);
    EXPECT_EQ(engine_entries.SetImageSharpeningLevel(nullptr, 1), 122);
  });
}

TEST_F(EngineLoaderFilesTest, FileThatIsNoLibraryFailsTheLoad) {
  Install("tqhe", ZR7700_TEST_ENGINE_LIBRARY);
  root_.WriteFile("Library/Printers/Tessary/Frameworks/tqhehpeh.framework/tqhehpeh", "text");
  LoadAndCheck('U', [](bool loaded) { EXPECT_FALSE(loaded); });
}

}  // namespace
}  // namespace zr7700
