// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/engine_properties.h"

#include "base/settings.h"
#include "engine/engine_entries.h"
#include "engine/job_variables.h"
#include "tests/support/job_test.h"
#include "tests/support/recorded_engine.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;

class EnginePropertiesTest : public test::JobTest {
 protected:
  EnginePropertiesTest() {
    engineHandle = engine_.handle();
    variables_.bidirectional = 1;
    variables_.horzResolution = variables_.vertResolution = 600;
    variables_.pageWidth = variables_.pageHeight = 2834;
    variables_.topDiscOffset = 69;
    variables_.PrintQuality = 2;
    variables_.DiscSurfaceQuality = 1;
    variables_.ImageSharpeningValue = 11;
    variables_.alignmentValue6 = 201;
    variables_.alignmentValue14 = 202;
    job_variables.files.engineIniPath = ini_path_.c_str();
  }

  // The calls or log lines of one run; the run succeeds.
  std::vector<std::string> Calls() {
    engine_.Clear();
    EXPECT_TRUE(SetHPEProperties(variables_));
    return engine_.calls();
  }
  std::vector<std::string> Lines() {
    log_.Clear();
    EXPECT_TRUE(SetHPEProperties(variables_));
    return LogLines();
  }

  // The log lines of one run at that threshold.
  std::vector<std::string> LinesAt(int threshold) {
    const test::LogCapture log(threshold);
    EXPECT_TRUE(SetHPEProperties(variables_));
    return log.Lines();
  }

  test::TemporaryFolder folder_;
  const std::string ini_path_ = folder_.WriteFile("engine.ini", "");
  test::RecordedEngine engine_;
  JobVariables variables_ = {};
};

TEST_F(EnginePropertiesTest, EveryCallInOrder) {
  EXPECT_THAT(
      Calls(),
      ElementsAre(
          "SetInputResolution(engine, 0, 600)", "SetInputResolution(engine, 1, 600)",
          "SetLeftMargin(engine, 1916)", "SetTopMargin(engine, 69)",
          "SetPhysicalWidth(engine, 5100)", "SetPrintableWidth(engine, 2834)",
          "SetPrintableHeight(engine, 2834)", "SetInstalledCartridge(engine, 0, 4, 1)",
          "SetInstalledCartridge(engine, 1, 3, 0)", "SetMediaType(engine, 1)",
          "SetOutputPrintQuality(engine, 2)", "SetPaperTray(engine, 2)", "SetPageIntent(engine, 1)",
          "SetImageSharpeningLevel(engine, 11)", "SetHPERasterFormat(engine, 4)",
          "SetAlignmentInformation(engine, 0, 112)", "SetAlignmentInformation(engine, 1, 112)",
          "SetAlignmentInformation(engine, 2, 112)", "SetAlignmentInformation(engine, 3, 112)",
          "SetAlignmentInformation(engine, 6, 201)", "SetAlignmentInformation(engine, 14, 202)",
          "SetAlignmentInformation(engine, 7, 40)", "SetAlignmentInformation(engine, 9, 40)"));
}

TEST_F(EnginePropertiesTest, EveryLogLineInOrder) {
  EXPECT_THAT(
      Lines(),
      ElementsAre("   SetHPEProperties: Printing with the following FERRO settings",
                  "     Setting print direction to BIDI", "      SetHorzInputResolution = (600)",
                  "      SetVertInputResolution = (600)", "     In ripGetMarginWidth",
                  "     Margin Width 1916", "      SetLeftMargin = (1916)",
                  "      SetTopMargin = (69)", "      SetPhysicalWidth = (5100)",
                  "      SetPrintableWidth = (2834)", "      SetPrintableHeight = (2834)",
                  "      CMY Cartridge Installed", "      K Cartridge Not Installed",
                  "     Resolution set to PQ_Normal", "     Media set to MT_PLAIN",
                  "      SetMediaType = (1)", "      SetOutputPrintQuality = (2)",
                  "      SetPaperTray = (2)", "      Setting PageIntent to PI_Photos",
                  "      SetImageSharpeningLevel = (11)", "      SetHPERasterFormat = (4)"));
}

TEST_F(EnginePropertiesTest, PrintDirectionGoesIntoTheIniFile) {
  Calls();
  EXPECT_EQ(test::ReadFile(ini_path_),
            "[ESwathBuilder]\nSlot1PrintDirection=0 \n\nSlot2PrintDirection=0 \n");
  variables_.bidirectional = 0;
  EXPECT_THAT(Lines(), Contains("     Setting print direction to UNI"));
  EXPECT_EQ(test::ReadFile(ini_path_),
            "[ESwathBuilder]\nSlot1PrintDirection=2 \n\nSlot2PrintDirection=1 \n");
}

TEST_F(EnginePropertiesTest, PrintDirectionThatCannotBeWrittenIsLoggedAndChangesNothing) {
  const std::string nowhere = folder_.PathOf("missing/engine.ini");
  job_variables.files.engineIniPath = nowhere.c_str();
  const std::vector<std::string> lines = Lines();
  EXPECT_THAT(std::vector<std::string>(lines.begin() + 2, lines.begin() + 10),
              ElementsAre("ferro ini file not present trying to create",
                          "Unable to open ferro ini file for writing", "WriteFerroIniFile failed",
                          "     Slot1 set print direction FAILED",
                          "ferro ini file not present trying to create",
                          "Unable to open ferro ini file for writing", "WriteFerroIniFile failed",
                          "     Slot2 set print direction FAILED"));
}

struct Failure {
  std::string entry;
  std::vector<std::string> lines;      // what a status of -255 logs
  std::vector<std::string> successes;  // and what it does not
};

TEST_F(EnginePropertiesTest, EveryRefusedCallIsLoggedAndFailsTheWholeButNothingIsLeftOut) {
  const Failure failures[] = {
      {"SetInputResolution",
       {"      SetHorzInputResolution FAILED - (-255)",
        "      SetVertInputResolution FAILED - (-255)"},
       {"      SetHorzInputResolution = (600)"}},
      {"SetLeftMargin", {"      SetLeftMargin FAILED - (-255)"}, {"      SetLeftMargin = (1916)"}},
      {"SetTopMargin", {"      SetTopMargin FAILED - (-255)"}, {"      SetTopMargin = (69)"}},
      {"SetPhysicalWidth",
       {"      SetPhysicalWidth FAILED - (-255)"},
       {"      SetPhysicalWidth = (5100)"}},
      {"SetPrintableWidth",
       {"      SetPrintableWidth FAILED - (-255)"},
       {"      SetPrintableWidth = (2834)"}},
      {"SetPrintableHeight",
       {"      SetPrintableHeight FAILED - (-255)"},
       {"      SetPrintableHeight = (2834)"}},
      {"SetInstalledCartridge",
       {"      CMY Cartridge Installed", "   SetInstalledCartridge FAILED - (0xFFFFFF01)",
        "      K Cartridge Not Installed", "     SetInstalledCartridge FAILED - (0xFFFFFF01)"},
       {}},
      {"SetMediaType", {"      SetMediaType FAILED - (-255)"}, {"      SetMediaType = (1)"}},
      {"SetOutputPrintQuality",
       {"      SetOutputPrintQuality FAILED - (-255)"},
       {"      SetOutputPrintQuality = (2)"}},
      {"SetPaperTray", {"      SetPaperTray FAILED - (-255)"}, {"      SetPaperTray = (2)"}},
      {"SetPageIntent",
       {"      Setting PageIntent to PI_Photos", "      SetPageIntent FAILED - (0xFFFFFF01)"},
       {}},
      {"SetImageSharpeningLevel",
       {"      SetImageSharpeningLevel FAILED - (0xFFFFFF01)"},
       {"      SetImageSharpeningLevel = (11)"}},
      {"SetHPERasterFormat",
       {"      SetHPERasterFormat FAILED - (-255)"},
       {"      SetHPERasterFormat = (4)"}},
  };
  for (const Failure& failure : failures) {
    engine_.Clear();
    log_.Clear();
    engine_.Answer(failure.entry, -255);
    EXPECT_FALSE(SetHPEProperties(variables_)) << failure.entry;
    EXPECT_EQ(engine_.calls().size(), 23u) << failure.entry;
    EXPECT_THAT(LogLines(), IsSupersetOf(failure.lines));
    for (const std::string& line : failure.successes) EXPECT_THAT(LogLines(), Not(Contains(line)));
    engine_.Answer(failure.entry, 0);
  }
}

TEST_F(EnginePropertiesTest, RefusedAlignmentChangesNothing) {
  const std::vector<std::string> lines = Lines();
  engine_.Answer("SetAlignmentInformation", 9);
  EXPECT_EQ(Lines(), lines);
}

TEST_F(EnginePropertiesTest, MissingEntryCountsAsAFailureWithStatusTwo) {
  engine_entries.SetPaperTray.Set(nullptr);
  EXPECT_FALSE(SetHPEProperties(variables_));
  EXPECT_THAT(LogLines(), Contains("      SetPaperTray FAILED - (2)"));
  EXPECT_EQ(engine_.calls().size(), 22u);
}

TEST_F(EnginePropertiesTest, NarrowPageIsWidenedToTwoInches) {
  variables_.pageWidth = 1000;
  EXPECT_THAT(Calls(),
              IsSupersetOf({"SetLeftMargin(engine, 1716)", "SetPrintableWidth(engine, 1200)",
                            "SetPhysicalWidth(engine, 5100)"}));
  const std::vector<std::string> lines = Lines();
  EXPECT_THAT(std::vector<std::string>(lines.begin() + 4, lines.begin() + 14),
              ElementsAre("     In ripGetMarginWidth", "     Margin Width 1916",
                          "      Left Margin = (1916)",
                          "      Changing LeftMargin to (1716) because of printer limitation",
                          "      SetLeftMargin = (1716)", "      SetTopMargin = (69)",
                          "      SetPhysicalWidth = (5100)", "      Print Width = (1000)",
                          "      Changing Width to (1200) because of printer limitation",
                          "      SetPrintableWidth = (1200)"));
}

TEST_F(EnginePropertiesTest, TwoInchesAreNotNarrow) {
  variables_.pageWidth = 1200;
  EXPECT_THAT(Calls(),
              IsSupersetOf({"SetLeftMargin(engine, 1916)", "SetPrintableWidth(engine, 1200)"}));
  variables_.pageWidth = 1199;
  EXPECT_THAT(Calls(),
              IsSupersetOf({"SetLeftMargin(engine, 1915)", "SetPrintableWidth(engine, 1200)"}));
}

TEST_F(EnginePropertiesTest, NarrowPagesMarginMayGoNegative) {
  variables_.pageWidth = 1000;
  settings.LeftMarginOffset = -1816;
  EXPECT_THAT(Calls(), Contains("SetLeftMargin(engine, -100)"));
}

TEST_F(EnginePropertiesTest, DraftHalvesTheMarginAndThePhysicalWidth) {
  variables_.horzResolution = 300;
  variables_.vertResolution = 600;
  variables_.pageWidth = 1417;
  EXPECT_THAT(Calls(),
              IsSupersetOf({"SetInputResolution(engine, 0, 300)",
                            "SetInputResolution(engine, 1, 600)", "SetLeftMargin(engine, 958)",
                            "SetPhysicalWidth(engine, 2550)", "SetPrintableWidth(engine, 1417)"}));
}

TEST_F(EnginePropertiesTest, PhysicalWidthIsComputedModulo2To32) {
  variables_.horzResolution = 1000000;  // 5100000000 - 4294967296 = 805032704, over 600
  variables_.pageWidth = 2834;
  EXPECT_THAT(Calls(), Contains("SetPhysicalWidth(engine, 1341721)"));
}

TEST_F(EnginePropertiesTest, NegativeTopMarginIsRaisedToZero) {
  variables_.topDiscOffset = -31;
  EXPECT_THAT(Calls(), Contains("SetTopMargin(engine, 0)"));
}

TEST_F(EnginePropertiesTest, MarginFollowsFamilyAndMedium) {
  variables_.DiscSurfaceQuality = 4;
  EXPECT_THAT(Calls(), Contains("SetLeftMargin(engine, 1902)"));
  variables_.isHeron = 1;
  variables_.DiscSurfaceQuality = 1;
  settings.LeftMarginOffsetHeron = -2000;
  EXPECT_THAT(Calls(), Contains("SetLeftMargin(engine, 0)"));
}

TEST_F(EnginePropertiesTest, SharpeningOutside1To12Is12) {
  const int32_t expected[][2] = {{INT32_MIN, 12}, {-1, 12}, {0, 12},  {1, 1},
                                 {12, 12},        {13, 12}, {99, 12}, {INT32_MAX, 12}};
  for (const auto& [value, sent] : expected) {
    variables_.ImageSharpeningValue = value;
    EXPECT_THAT(Calls(), Contains("SetImageSharpeningLevel(engine, " + std::to_string(sent) + ")"));
  }
}

TEST_F(EnginePropertiesTest, HeronMapsTheThirdQualityToTheBest) {
  variables_.isHeron = 1;
  variables_.PrintQuality = 3;
  variables_.DiscSurfaceQuality = 4;
  EXPECT_THAT(Calls(),
              IsSupersetOf({"SetOutputPrintQuality(engine, 4)", "SetMediaType(engine, 1)"}));
  EXPECT_THAT(Lines(),
              IsSupersetOf({"     Resolution mapped to PQ_BEST", "     Media mapped to MT_PLAIN",
                            "      SetOutputPrintQuality = (4)"}));
}

TEST_F(EnginePropertiesTest, GraniteHasACodeForTheThirdQualityAndForGlossyMedia) {
  variables_.PrintQuality = 3;
  variables_.DiscSurfaceQuality = 4;
  EXPECT_THAT(Calls(),
              IsSupersetOf({"SetOutputPrintQuality(engine, 3)", "SetMediaType(engine, 8)"}));
  EXPECT_THAT(Lines(), IsSupersetOf({"     Resolution set to PQ_BETTER",
                                     "     Media set to MT_GLOSSY2", "      SetMediaType = (8)"}));
}

TEST_F(EnginePropertiesTest, OnlyTheHeadingIsAMilestone) {
  const std::string heading = "   SetHPEProperties: Printing with the following FERRO settings";
  variables_.pageWidth = 1000;
  std::vector<std::string> expected = Lines();
  EXPECT_EQ(expected.size(), 25u);  // four of the narrow page
  EXPECT_EQ(std::erase(expected, "     In ripGetMarginWidth"), 1u);
  EXPECT_EQ(LinesAt(3), expected);
  EXPECT_EQ(LinesAt(4), expected);
  EXPECT_EQ(std::erase(expected, heading), 1u);
  EXPECT_EQ(LinesAt(1), expected);
  EXPECT_EQ(LinesAt(2), expected);
}

TEST_F(EnginePropertiesTest, FailuresAreDetails) {
  for (const char* const entry :
       {"SetInputResolution", "SetLeftMargin", "SetTopMargin", "SetPhysicalWidth",
        "SetPrintableWidth", "SetPrintableHeight", "SetInstalledCartridge", "SetMediaType",
        "SetOutputPrintQuality", "SetPaperTray", "SetPageIntent", "SetImageSharpeningLevel",
        "SetHPERasterFormat"}) {
    engine_.Answer(entry, 10);
  }
  const std::string nowhere = folder_.PathOf("missing/engine.ini");
  job_variables.files.engineIniPath = nowhere.c_str();
  const test::LogCapture log(1);
  EXPECT_FALSE(SetHPEProperties(variables_));
  EXPECT_THAT(
      log.Lines(),
      IsSupersetOf(
          {"     Slot1 set print direction FAILED", "     Slot2 set print direction FAILED",
           "      SetHorzInputResolution FAILED - (10)",
           "      SetVertInputResolution FAILED - (10)", "      SetLeftMargin FAILED - (10)",
           "      SetTopMargin FAILED - (10)", "      SetPhysicalWidth FAILED - (10)",
           "      SetPrintableWidth FAILED - (10)", "      SetPrintableHeight FAILED - (10)",
           "   SetInstalledCartridge FAILED - (0xA)", "     SetInstalledCartridge FAILED - (0xA)",
           "      SetMediaType FAILED - (10)", "      SetOutputPrintQuality FAILED - (10)",
           "      SetPaperTray FAILED - (10)", "      SetPageIntent FAILED - (0xA)",
           "      SetImageSharpeningLevel FAILED - (0xA)",
           "      SetHPERasterFormat FAILED - (10)"}));
}

TEST_F(EnginePropertiesTest, PageWidthIsMeasuredWithItsSign) {
  variables_.pageWidth = 0xFFFFFFFF;  // 1916 - (1200 + 1) is 715
  EXPECT_THAT(Calls(),
              IsSupersetOf({"SetLeftMargin(engine, 715)", "SetPrintableWidth(engine, 1200)"}));
  EXPECT_THAT(Lines(), Contains("      Print Width = (-1)"));
  variables_.pageWidth = 0x80000000;  // 1916 - 1200 - 2^31
  EXPECT_THAT(Calls(), IsSupersetOf({"SetLeftMargin(engine, -2147482932)",
                                     "SetPrintableWidth(engine, 1200)"}));
  variables_.pageWidth = 0x7FFFFFFF;
  EXPECT_THAT(Calls(), IsSupersetOf({"SetLeftMargin(engine, 1916)",
                                     "SetPrintableWidth(engine, 2147483647)"}));
}

}  // namespace
}  // namespace zr7700
