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
      {"HPEInitialize", [](HPEHandle e) { return hpe::HPEInitialize(e, "a", "b", "c", "d"); },
       "(engine, \"a\", \"b\", \"c\", \"d\")"},
      {"HPEStartDoc",
       [](HPEHandle e) { return hpe::HPEStartDoc(e, WriteEngineOutput, "p", &job_variables); },
       "(engine, WriteEngineOutput, \"p\", 0, 0, 142, variables)"},
      {"HPEStartPage", [](HPEHandle e) { return hpe::HPEStartPage(e); }, "(engine)"},
      {"HPESendBand", [](HPEHandle e) { return hpe::HPESendBand(e, 70000, 1, 2, 8, data); },
       "(engine, 0, 70000, 1, 2, 8, data)"},
      {"HPEEndPage", [](HPEHandle e) { return hpe::HPEEndPage(e); }, "(engine, 0)"},
      {"HPEEndDoc", [](HPEHandle e) { return hpe::HPEEndDoc(e); }, "(engine, 0)"},
      {"SetInputResolution", [](HPEHandle e) { return hpe::SetInputResolution(e, 1, 600); },
       "(engine, 1, 600)"},
      {"SetLeftMargin", [](HPEHandle e) { return hpe::SetLeftMargin(e, -1); }, "(engine, -1)"},
      {"SetTopMargin", [](HPEHandle e) { return hpe::SetTopMargin(e, 2); }, "(engine, 2)"},
      {"SetPrintableWidth", [](HPEHandle e) { return hpe::SetPrintableWidth(e, 3); },
       "(engine, 3)"},
      {"SetPrintableHeight", [](HPEHandle e) { return hpe::SetPrintableHeight(e, 4); },
       "(engine, 4)"},
      {"SetPhysicalWidth", [](HPEHandle e) { return hpe::SetPhysicalWidth(e, 5); }, "(engine, 5)"},
      {"SetInstalledCartridge", [](HPEHandle e) { return hpe::SetInstalledCartridge(e, 6, 7, 8); },
       "(engine, 6, 7, 8)"},
      {"SetHPERasterFormat", [](HPEHandle e) { return hpe::SetHPERasterFormat(e, 9); },
       "(engine, 9)"},
      {"SetAlignmentInformation",
       [](HPEHandle e) { return hpe::SetAlignmentInformation(e, 10, 11); }, "(engine, 10, 11)"},
      {"SetPageIntent", [](HPEHandle e) { return hpe::SetPageIntent(e, 12); }, "(engine, 12)"},
      {"SetMediaType", [](HPEHandle e) { return hpe::SetMediaType(e, 13); }, "(engine, 13)"},
      {"SetOutputPrintQuality", [](HPEHandle e) { return hpe::SetOutputPrintQuality(e, 14); },
       "(engine, 14)"},
      {"SetPaperTray", [](HPEHandle e) { return hpe::SetPaperTray(e, 15); }, "(engine, 15)"},
      {"SetImageSharpeningLevel", [](HPEHandle e) { return hpe::SetImageSharpeningLevel(e, 16); },
       "(engine, 16)"},
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
  EXPECT_EQ(hpe::CreateHostPrintEngine(), nullptr);
}

TEST(EngineEntries, MissingDestroyerDoesNothing) {
  engine_entries = EngineEntryTable{};
  hpe::DestroyHostPrintEngine(nullptr);
  EXPECT_EQ(engine_entries.DestroyHostPrintEngine, nullptr);
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
  EXPECT_EQ(hpe::CreateHostPrintEngine(), engine.handle());
  hpe::DestroyHostPrintEngine(engine.handle());
  EXPECT_THAT(engine.calls(),
              ElementsAre("CreateHostPrintEngine()", "DestroyHostPrintEngine(engine)"));
}

TEST(EngineEntries, SlotIsTestedAtEveryCall) {
  test::RecordedEngine engine;
  EXPECT_EQ(hpe::SetPaperTray(engine.handle(), 1), 0);
  engine_entries.SetPaperTray = nullptr;
  EXPECT_EQ(hpe::SetPaperTray(engine.handle(), 1), 2);
  EXPECT_EQ(engine.calls().size(), 1u);
}

}  // namespace
}  // namespace zr7700
