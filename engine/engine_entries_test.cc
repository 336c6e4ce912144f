// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/engine_entries.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "engine/engine_output.h"
#include "engine/job_variables.h"
#include "tests/support/recorded_engine.h"

namespace zr7700 {
namespace {

using testing::ElementsAre;

struct WrapperCase {
  std::string entry;
  std::function<int32_t(HPEHandle)> call;
  std::string recorded;
};

const std::vector<WrapperCase>& Wrappers() {
  static const uint8_t data[4] = {};
  static const std::vector<WrapperCase> cases = {
      {"HPEInitialize",
       [](HPEHandle e) { return engine_entries.HPEInitialize(e, "a", "b", "c", "d"); },
       "(engine, \"a\", \"b\", \"c\", \"d\")"},
      {"HPEStartDoc",
       [](HPEHandle e) {
         return engine_entries.HPEStartDoc(e, WriteEngineOutput, "p", 0, 0, HPE_START_DOC_CODE,
                                           &job_variables);
       },
       "(engine, WriteEngineOutput, \"p\", 0, 0, 142, variables)"},
      {"HPEStartPage", [](HPEHandle e) { return engine_entries.HPEStartPage(e); }, "(engine)"},
      {"HPESendBand",
       [](HPEHandle e) { return engine_entries.HPESendBand(e, 0, 70000, 1, 2, 8, data); },
       "(engine, 0, 70000, 1, 2, 8, data)"},
      {"HPEEndPage", [](HPEHandle e) { return engine_entries.HPEEndPage(e, 0); }, "(engine, 0)"},
      {"HPEEndDoc", [](HPEHandle e) { return engine_entries.HPEEndDoc(e, 0); }, "(engine, 0)"},
      {"SetInputResolution",
       [](HPEHandle e) { return engine_entries.SetInputResolution(e, 1, 600); },
       "(engine, 1, 600)"},
      {"SetLeftMargin", [](HPEHandle e) { return engine_entries.SetLeftMargin(e, -1); },
       "(engine, -1)"},
      {"SetTopMargin", [](HPEHandle e) { return engine_entries.SetTopMargin(e, 2); },
       "(engine, 2)"},
      {"SetPrintableWidth", [](HPEHandle e) { return engine_entries.SetPrintableWidth(e, 3); },
       "(engine, 3)"},
      {"SetPrintableHeight", [](HPEHandle e) { return engine_entries.SetPrintableHeight(e, 4); },
       "(engine, 4)"},
      {"SetPhysicalWidth", [](HPEHandle e) { return engine_entries.SetPhysicalWidth(e, 5); },
       "(engine, 5)"},
      {"SetInstalledCartridge",
       [](HPEHandle e) { return engine_entries.SetInstalledCartridge(e, 6, 7, 8); },
       "(engine, 6, 7, 8)"},
      {"SetHPERasterFormat", [](HPEHandle e) { return engine_entries.SetHPERasterFormat(e, 9); },
       "(engine, 9)"},
      {"SetAlignmentInformation",
       [](HPEHandle e) { return engine_entries.SetAlignmentInformation(e, 10, 11); },
       "(engine, 10, 11)"},
      {"SetPageIntent", [](HPEHandle e) { return engine_entries.SetPageIntent(e, 12); },
       "(engine, 12)"},
      {"SetMediaType", [](HPEHandle e) { return engine_entries.SetMediaType(e, 13); },
       "(engine, 13)"},
      {"SetOutputPrintQuality",
       [](HPEHandle e) { return engine_entries.SetOutputPrintQuality(e, 14); }, "(engine, 14)"},
      {"SetPaperTray", [](HPEHandle e) { return engine_entries.SetPaperTray(e, 15); },
       "(engine, 15)"},
      {"SetImageSharpeningLevel",
       [](HPEHandle e) { return engine_entries.SetImageSharpeningLevel(e, 16); }, "(engine, 16)"},
  };
  return cases;
}

TEST(EngineEntries, WrapperOfAMissingEntryAnswersTwo) {
  engine_entries = EngineEntryTable{};
  for (const WrapperCase& wrapper : Wrappers()) {
    EXPECT_EQ(wrapper.call(nullptr), 2) << wrapper.entry;
  }
}

TEST(EngineEntries, MissingCreatorAnswersTheNullHandle) {
  engine_entries = EngineEntryTable{};
  EXPECT_EQ(engine_entries.CreateHostPrintEngine(), nullptr);
}

TEST(EngineEntries, MissingDestroyerDoesNothing) {
  engine_entries = EngineEntryTable{};
  engine_entries.DestroyHostPrintEngine(nullptr);
  EXPECT_TRUE(engine_entries.DestroyHostPrintEngine.IsMissing());
}

TEST(EngineEntries, WrapperPassesArgumentsAndAnswerOn) {
  test::RecordedEngine engine;
  for (const WrapperCase& wrapper : Wrappers()) {
    for (const int32_t answer : {0, 1, -1, INT32_MIN}) {
      engine.Clear();
      engine.Answer(wrapper.entry, answer);
      EXPECT_EQ(wrapper.call(engine.handle()), answer) << wrapper.entry;
      EXPECT_THAT(engine.calls(), ElementsAre(wrapper.entry + wrapper.recorded));
    }
  }
  EXPECT_EQ(Wrappers().size(), 20u);
}

TEST(EngineEntries, CreatorAndDestroyerPassTheHandle) {
  test::RecordedEngine engine;
  EXPECT_EQ(engine_entries.CreateHostPrintEngine(), engine.handle());
  engine_entries.DestroyHostPrintEngine(engine.handle());
  EXPECT_THAT(engine.calls(),
              ElementsAre("CreateHostPrintEngine()", "DestroyHostPrintEngine(engine)"));
}

TEST(EngineEntries, SlotIsTestedAtEveryCall) {
  test::RecordedEngine engine;
  EXPECT_EQ(engine_entries.SetPaperTray(engine.handle(), 1), 0);
  engine_entries.SetPaperTray.Set(nullptr);
  EXPECT_EQ(engine_entries.SetPaperTray(engine.handle(), 1), 2);
  EXPECT_EQ(engine.calls().size(), 1u);
}

}  // namespace
}  // namespace zr7700
