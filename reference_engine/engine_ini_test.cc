#include "reference_engine/engine_ini.h"

#include <gtest/gtest.h>

#include <sstream>

namespace zr7700::reference_engine {
namespace {

EngineIni Parse(const std::string& text) {
  std::istringstream stream(text);
  return ParseEngineIni(stream);
}

TEST(EngineIniTest, ReadsWhatTheHostWrites) {
  const EngineIni ini = Parse(
      "[Configuration]\nUseDebugSettings=1 \nPrinter=1 \nColor=2 \n\n[ESwathBuilder]\n"
      "Slot1NumPassesOverride=8 \nSlot1PrintDirection=2 \nSlot2PrintDirection=1 \n");
  EXPECT_EQ(ini.printer, 1);
  EXPECT_EQ(ini.color, 2);
  EXPECT_EQ(ini.passes, 8);
  EXPECT_EQ(ini.slot1_direction, 2);
  EXPECT_EQ(ini.slot2_direction, 1);
}

void ExpectNothingAsked(const EngineIni& ini) {
  EXPECT_EQ(ini.printer, 0);
  EXPECT_EQ(ini.color, 0);
  EXPECT_EQ(ini.passes, 0);
  EXPECT_EQ(ini.slot1_direction, -1);
  EXPECT_EQ(ini.slot2_direction, -1);
}

TEST(EngineIniTest, EmptyAndMissingFilesAskForNothing) {
  ExpectNothingAsked(Parse(""));
  ExpectNothingAsked(ReadEngineIni("/nonexistent/cfg.ini"));
  ExpectNothingAsked(ReadEngineIni("/"));
}

TEST(EngineIniTest, OverridesCountOnlyWithDebugSettings) {
  ExpectNothingAsked(
      Parse("[Configuration]\nColor=2\n[ESwathBuilder]\n"
            "Slot1NumPassesOverride=8\nSlot1PrintDirection=2\n"));
  ExpectNothingAsked(Parse("[Configuration]\nUseDebugSettings=0\nColor=2\n"));
}

TEST(EngineIniTest, IgnoresWhatItDoesNotKnow) {
  ExpectNothingAsked(
      Parse("[Configuration]\nUseDebugSettings=1\nColor=3\n[ESwathBuilder]\n"
            "Slot1NumPassesOverride=3\nSlot1PrintDirection=7\n"
            "Slot2PrintDirection=x\nOther=1\nno equals sign\n=5\n"));
  ExpectNothingAsked(Parse("[Configuration]\nUseDebugSettings=1\nColor=99999999999999999\n"));
}

TEST(EngineIniTest, KeysBelongToTheirSection) {
  ExpectNothingAsked(
      Parse("UseDebugSettings=1\n[ESwathBuilder]\nUseDebugSettings=1\n"
            "Slot1NumPassesOverride=2\n"));
  EXPECT_EQ(Parse("[Configuration]\nUseDebugSettings=1\nSlot1NumPassesOverride=2\n").passes, 0);
}

TEST(EngineIniTest, TheLastOfSeveralCounts) {
  EXPECT_EQ(Parse("[Configuration]\nUseDebugSettings=1\nColor=1\nColor=2\n").color, 2);
}

TEST(EngineIniTest, TakesCarriageReturnsBlanksAndAMissingLastNewline) {
  EXPECT_EQ(Parse("[Configuration]\r\nUseDebugSettings = 1\r\n  Color =\t2").color, 2);
}

}  // namespace
}  // namespace zr7700::reference_engine
