// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/document.h"

#include <cstdio>
#include <cstring>

#include "base/settings.h"
#include "engine/clip_buffers.h"
#include "engine/engine_entries.h"
#include "engine/engine_output.h"
#include "engine/job_variables.h"
#include "tests/support/job_test.h"
#include "tests/support/marked_ppd.h"
#include "tests/support/recorded_engine.h"
#include "tests/support/stream_capture.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using Choices = test::MarkedPpd::Choices;

constexpr char kStartDoc[] = "HPEStartDoc(engine, WriteEngineOutput, \"";
constexpr char kStartDocEnd[] = "\", 0, 0, 142, variables)";

class DocumentTest : public test::JobTest {
 protected:
  DocumentTest() {
    JobVariables& v = job_variables;
    v.files.enginePath1 = "/one";
    v.files.enginePath2 = "/two";
    v.files.enginePath3 = "/three";
    v.files.enginePath4 = "/four";
    v.files.colorTableStandard = "/standard";
    v.files.colorTablePhoto = "/photo";
    v.files.colorTablePhotoGlossy = "/glossy";
    v.files.engineIniPath = ini_path_.c_str();
  }

  bool SetUpDocument(const Choices& choices) {
    const test::MarkedPpd ppd(choices);
    return DocumentSetup(ppd.get());
  }

  std::string IniText() const { return test::ReadFile(ini_path_); }

  test::TemporaryFolder folder_;
  const std::string ini_path_ = folder_.WriteFile("engine.ini", "");
  test::RecordedEngine engine_;
};

TEST_F(DocumentTest, EngineIsCreatedInitialisedAndGivenItsDocument) {
  EXPECT_TRUE(SetUpDocument({}));
  EXPECT_THAT(engine_.calls(),
              ElementsAre("CreateHostPrintEngine()",
                          "HPEInitialize(engine, \"/one\", \"/two\", \"/three\", \"/four\")",
                          std::string(kStartDoc) + "/photo" + kStartDocEnd));
  EXPECT_EQ(engineHandle, engine_.handle());
}

TEST_F(DocumentTest, EveryLogLineInOrder) {
  EXPECT_TRUE(SetUpDocument({{"InnerDiameter", "220"},
                             {"Saturation", "90"},
                             {"OuterMargin", "3"},
                             {"MediaType", "HighGloss"},
                             {"PrintQuality", "Quality1"},
                             {"ColorMatching", "Standard"},
                             {"Bidi", "No"}}));
  EXPECT_THAT(
      LogLines(),
      ElementsAre("SETUP", "   LittleEndian", "   ### HPEInitialize",
                  "   HPEInitialize Success /three /four", "   InnerDiameterChoice : 220",
                  "   SaturationChoice : 90", "   OuterMarginChoice : 3",
                  "Default Page Format CDDVD", "NORMAL MODE", "   MediaTypeChoice : HighGloss",
                  "   PrintQualityChoice : Quality1", "   ColorMatchingChoice : Standard",
                  "   BidiChoice : No", "   ### HPEStartDoc Called with color table /standard",
                  "   ### HPEStartDoc Passed", "SETUP_END"));
}

TEST_F(DocumentTest, RecordAfterAJobWithoutChoices) {
  settings.TopMarginOffset = -100;
  settings.RunComp = -2;
  settings.RunCompDiv = 4000;
  settings.ImageSharpeningLevel = 7;
  EXPECT_TRUE(SetUpDocument({}));
  const JobVariables& v = job_variables;
  EXPECT_EQ(v.ColorMatching, 0);
  EXPECT_EQ(v.PrintQuality, 0);
  EXPECT_EQ(v.DiscSurfaceQuality, 0);
  EXPECT_EQ(v.InkSaturation, 0);
  EXPECT_EQ(v.OuterMargin, 0u);
  EXPECT_EQ(v.InnerDiam, 0u);
  EXPECT_EQ(v.bidirectional, 1);
  EXPECT_EQ(v.discForm, 1u);
  EXPECT_EQ(v.imageHeight, 2834u);
  EXPECT_EQ(v.imageWidth, 2834u);
  EXPECT_EQ(v.clipBufferBytes, 20400u);
  EXPECT_EQ(v.maxImageDots, 5100u);
  EXPECT_EQ(v.nPhotoThreshold, 700u);
  EXPECT_EQ(v.nRunCompValue, 0xFFFFFFFEu);
  EXPECT_EQ(v.nRunCompDiv, 4000u);
  EXPECT_EQ(v.ImageSharpeningValue, 7);
  EXPECT_EQ(v.topDiscOffset, -31);
  EXPECT_EQ(v.alignmentSkip, 0);
}

TEST_F(DocumentTest, TopOffsetIsThatOfTheFamily) {
  settings.TopMarginOffset = 1000;
  settings.TopMarginOffsetHeron = 2000;
  EXPECT_TRUE(SetUpDocument({}));
  EXPECT_EQ(job_variables.topDiscOffset, 1069);
  job_variables.isHeron = 1;
  EXPECT_TRUE(SetUpDocument({}));
  EXPECT_EQ(job_variables.topDiscOffset, 2069);
}

TEST_F(DocumentTest, DivisorZeroIsToldInOneExtraLine) {
  EXPECT_TRUE(SetUpDocument({}));
  const std::vector<std::string> usual = LogLines();
  log_.Clear();
  settings.RunCompDiv = 0;
  EXPECT_TRUE(SetUpDocument({}));
  std::vector<std::string> lines = LogLines();
  EXPECT_EQ(lines.size(), usual.size() + 1);
  std::erase_if(lines, [](const std::string& s) { return s.find("RunCompDiv") != s.npos; });
  EXPECT_EQ(lines, usual);
  const test::LogCapture details(1);
  EXPECT_TRUE(SetUpDocument({}));
  EXPECT_THAT(details.Lines(), Contains(testing::HasSubstr("RunCompDiv")));
}

TEST_F(DocumentTest, DraftHalvesOffsetHoleAndMargin) {
  job_variables.horzResolution = 300;
  settings.TopMarginOffset = 1;
  EXPECT_TRUE(SetUpDocument({{"InnerDiameter", "221"}, {"OuterMargin", "3"}}));
  EXPECT_EQ(job_variables.topDiscOffset, 35);
  EXPECT_EQ(job_variables.InnerDiam, 110u);
  EXPECT_EQ(job_variables.OuterMargin, 3u);
  EXPECT_THAT(LogLines(), Contains("Draft Mode set Top Offset to 300 dpi units"));
  EXPECT_THAT(LogLines(), Not(Contains("NORMAL MODE")));
}

TEST_F(DocumentTest, DraftTurnsNegativeNumbersIntoLargePositiveOnes) {
  job_variables.horzResolution = 300;
  settings.TopMarginOffset = -71;
  EXPECT_TRUE(SetUpDocument({{"InnerDiameter", "-2"}, {"OuterMargin", "-3"}}));
  EXPECT_EQ(job_variables.topDiscOffset, 0x7FFFFFFF);
  EXPECT_EQ(job_variables.InnerDiam, 0x7FFFFFFFu);
  EXPECT_EQ(job_variables.OuterMargin, 0x7FFFFFFCu);  // -7 is 0xFFFFFFF9
}

TEST_F(DocumentTest, RefusedInitialisationEndsTheSetupAtOnce) {
  engine_.Answer("HPEInitialize", -2);
  EXPECT_FALSE(SetUpDocument({{"InnerDiameter", "220"}}));
  EXPECT_THAT(LogLines(), ElementsAre("SETUP", "   LittleEndian", "   ### HPEInitialize",
                                      "   HPEInitialize Failed 0xfffffffe"));
  EXPECT_EQ(engine_.calls().size(), 2u);
  EXPECT_EQ(job_variables.InnerDiam, 0u);
  EXPECT_EQ(job_variables.clipBufferBytes, 0u);
  EXPECT_EQ(IniText(), "");
}

TEST_F(DocumentTest, RefusedDocumentKeepsFieldsAndIniFile) {
  engine_.Answer("HPEStartDoc", 0x10);
  EXPECT_FALSE(SetUpDocument({{"InnerDiameter", "220"}}));
  EXPECT_EQ(LogLines().back(), "   ### HPEStartDoc Failed 0x10");
  EXPECT_EQ(job_variables.InnerDiam, 220u);
  EXPECT_NE(IniText(), "");
  EXPECT_THAT(engine_.calls(), Not(Contains("DestroyHostPrintEngine(engine)")));
}

TEST_F(DocumentTest, EngineThatCannotBeCreatedIsPassedOnAsNull) {
  engine_entries.CreateHostPrintEngine.Set(nullptr);
  engine_.Answer("HPEInitialize", 3);
  EXPECT_FALSE(SetUpDocument({}));
  EXPECT_THAT(engine_.calls(),
              ElementsAre("HPEInitialize(null, \"/one\", \"/two\", \"/three\", \"/four\")"));
  EXPECT_EQ(LogLines().back(), "   HPEInitialize Failed 0x3");
}

TEST_F(DocumentTest, IniFileThatCannotBeWrittenIsIgnored) {
  const std::string nowhere = folder_.PathOf("missing/engine.ini");
  job_variables.files.engineIniPath = nowhere.c_str();
  EXPECT_TRUE(SetUpDocument({}));
}

TEST_F(DocumentTest, ColorKeyTellsStandardColoursFromOthers) {
  EXPECT_TRUE(SetUpDocument({}));
  EXPECT_EQ(IniText(), "[Configuration]\nUseDebugSettings=1 \n\nPrinter=1 \n\nColor=2 \n");
  EXPECT_TRUE(SetUpDocument({{"ColorMatching", "Standard"}}));
  EXPECT_THAT(IniText(), testing::HasSubstr("\nColor=1 \n"));
  EXPECT_TRUE(SetUpDocument({{"ColorMatching", "BestForPhotos"}}));
  EXPECT_THAT(IniText(), testing::HasSubstr("\nColor=2 \n"));
}

struct Passes {
  uint8_t is_heron;
  const char* quality;  // null: no choice
  const char* line;     // what becomes of the line of an earlier job's 16 passes
};

TEST_F(DocumentTest, PassCountsByFamilyAndQuality) {
  constexpr char kOld[] = "Slot1NumPassesOverride=16\n";
  const Passes rows[] = {{1, "Quality1", "Slot1NumPassesOverride=1 \n"},
                         {1, "Quality2", "Slot1NumPassesOverride=2 \n"},
                         {1, "Quality3", "Slot1NumPassesOverride=4 \n"},
                         {1, "Quality4", "Slot1NumPassesOverride=8 \n"},
                         {1, nullptr, kOld},
                         {0, "Quality1", "Slot1NumPassesOverride=1 \n"},
                         {0, "Quality2", ""},
                         {0, "Quality3", kOld},
                         {0, "Quality4", "Slot1NumPassesOverride=8 \n"},
                         {0, nullptr, kOld}};
  const std::string keys = "[Configuration]\nUseDebugSettings=1 \nPrinter=1 \nColor=2 \n";
  for (const Passes& row : rows) {
    folder_.WriteFile("engine.ini", keys + "[ESwathBuilder]\n" + kOld + "Other=1\n");
    job_variables.isHeron = row.is_heron;
    job_variables.PrintQuality = 0;
    EXPECT_TRUE(row.quality != nullptr ? SetUpDocument({{"PrintQuality", row.quality}})
                                       : SetUpDocument({}));
    EXPECT_EQ(IniText(), keys + "[ESwathBuilder]\n" + row.line + "Other=1\n")
        << int{row.is_heron} << (row.quality != nullptr ? row.quality : " none");
  }
}

TEST_F(DocumentTest, ColourTableByColoursQualityAndMedium) {
  for (uint8_t colors = 0; colors < 4; ++colors) {
    for (uint8_t quality = 0; quality < 6; ++quality) {
      for (uint8_t medium = 0; medium < 7; ++medium) {
        job_variables.ColorMatching = colors;
        job_variables.PrintQuality = quality;
        job_variables.DiscSurfaceQuality = medium;
        std::string table = "/photo";
        if ((quality == 3 || quality == 4) && (medium == 3 || medium == 4 || medium == 5)) {
          table = "/glossy";
        }
        if (colors == 1) table = "/standard";
        for (const bool at_setup : {true, false}) {
          engine_.Clear();
          EXPECT_TRUE(at_setup ? SetUpDocument({}) : RestartDocument());
          EXPECT_EQ(engine_.calls().back(), kStartDoc + table + kStartDocEnd)
              << int{colors} << int{quality} << int{medium};
        }
      }
    }
  }
}

TEST_F(DocumentTest, ColourTablePathOf256CharactersEndsTheProcess) {
  const std::string longest(255, 'p');
  job_variables.files.colorTablePhoto = longest.c_str();
  EXPECT_TRUE(SetUpDocument({}));
  EXPECT_TRUE(RestartDocument());
  EXPECT_EQ(engine_.calls().back(), kStartDoc + longest + kStartDocEnd);
  const std::string too_long(256, 'p');
  job_variables.files.colorTablePhoto = too_long.c_str();
  const test::MarkedPpd ppd({});
  EXPECT_EXIT(DocumentSetup(ppd.get()), testing::ExitedWithCode(1), "^ERROR: [^\n]*256[^\n]*\n$");
  EXPECT_EXIT(RestartDocument(), testing::ExitedWithCode(1), "^ERROR: [^\n]*256[^\n]*\n$");
}

TEST_F(DocumentTest, RestartEndsTheDocumentAndFlushesBeforeAndAfter) {
  test::StdoutCapture output;
  std::vector<std::string> arrived;
  uint8_t page[] = {'p', 'a', 'g', 'e'};
  uint8_t end[] = {'e', 'n', 'd'};
  engineHandle = engine_.handle();
  engine_.During("HPEEndDoc", [&] {
    arrived.push_back(output.Arrived());
    WriteEngineOutput(&job_variables, end, sizeof end);
  });
  engine_.During("HPEStartDoc", [&] { arrived.push_back(output.Arrived()); });
  WriteEngineOutput(&job_variables, page, sizeof page);
  EXPECT_TRUE(RestartDocument());
  output.Take();
  EXPECT_THAT(arrived, ElementsAre("page", "pageend"));
  EXPECT_THAT(engine_.calls(), ElementsAre("HPEEndDoc(engine, 0)",
                                           std::string(kStartDoc) + "/photo" + kStartDocEnd));
  EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(DocumentTest, RefusalsDuringARestartAreSilent) {
  engine_.Answer("HPEEndDoc", 1);
  engine_.Answer("HPEStartDoc", 1);
  EXPECT_TRUE(RestartDocument());
  EXPECT_EQ(engine_.calls().size(), 2u);
  EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(DocumentTest, EndGivesTableAndEngineBack) {
  ASSERT_TRUE(SetUpDocument({}));
  job_variables.rightOutputImage = job_variables.bottomOutputImage = 100;
  ASSERT_TRUE(ClipDataBufsCreate(job_variables));
  log_.Clear();
  engine_.Clear();
  const void* table_at_destruction = &engine_;
  engine_.During("DestroyHostPrintEngine",
                 [&] { table_at_destruction = job_variables.clipDataBufs; });
  EXPECT_TRUE(EndDocument());
  EXPECT_THAT(engine_.calls(),
              ElementsAre("HPEEndDoc(engine, 0)", "DestroyHostPrintEngine(engine)"));
  EXPECT_THAT(LogLines(),
              ElementsAre("   ### HPEEndDoc", "OemClipDataBufsDelete: FREE clipDataBufs"));
  EXPECT_EQ(table_at_destruction, nullptr);
  EXPECT_EQ(engineHandle, engine_.handle());
}

TEST_F(DocumentTest, FailedEndIsOnlyLogged) {
  engineHandle = engine_.handle();
  engine_.Answer("HPEEndDoc", 0xAB);
  EXPECT_TRUE(EndDocument());
  EXPECT_THAT(LogLines(), ElementsAre("   ### HPEEndDoc", "HPEEndDoc Failed 0xab"));
  EXPECT_EQ(engine_.calls().back(), "DestroyHostPrintEngine(engine)");
}

TEST_F(DocumentTest, SetupAtEveryLevel) {
  for (const int threshold : {1, 2, 3, 4}) {
    const test::LogCapture log(threshold);
    EXPECT_TRUE(SetUpDocument({{"PrintQuality", "Quality1"}}));
    if (threshold < 3) {
      EXPECT_THAT(log.Lines(), ElementsAre("   HPEInitialize Success /three /four", "NORMAL MODE",
                                           "   ### HPEStartDoc Called with color table /photo",
                                           "   ### HPEStartDoc Passed"));
    } else {
      EXPECT_THAT(log.Lines(),
                  ElementsAre("SETUP", "   LittleEndian", "   ### HPEInitialize",
                              "   HPEInitialize Success /three /four", "Default Page Format CDDVD",
                              "NORMAL MODE", "   PrintQualityChoice : Quality1",
                              "   ### HPEStartDoc Called with color table /photo",
                              "   ### HPEStartDoc Passed", "SETUP_END"));
    }
  }
}

TEST_F(DocumentTest, DraftAndFailuresAreDetails) {
  const test::LogCapture log(1);
  job_variables.horzResolution = 300;
  engine_.Answer("HPEStartDoc", 0x10);
  EXPECT_FALSE(SetUpDocument({}));
  engine_.Answer("HPEInitialize", -2);
  EXPECT_FALSE(SetUpDocument({}));
  engine_.Answer("HPEEndDoc", 0xAB);
  EXPECT_TRUE(EndDocument());
  EXPECT_THAT(log.Lines(),
              ElementsAre("   HPEInitialize Success /three /four",
                          "Draft Mode set Top Offset to 300 dpi units",
                          "   ### HPEStartDoc Called with color table /photo",
                          "   ### HPEStartDoc Failed 0x10", "   HPEInitialize Failed 0xfffffffe",
                          "   ### HPEEndDoc", "HPEEndDoc Failed 0xab"));
}

}  // namespace
}  // namespace zr7700
