// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/engine_ini.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "reference_engine/engine_status.h"

namespace zr7700::reference_engine {
namespace {

namespace fs = std::filesystem;

EngineIni Parse(std::string_view text) { return ParseEngineIni(text); }

TEST(EngineIniTest, ReadsWhatTheHostWrites) {
  const EngineIni ini = Parse(
      "[Configuration]\nUseDebugSettings=1 \nPrinter=1 \nColor=2 \n\n[ESwathBuilder]\n"
      "Slot1NumPassesOverride=8 \nSlot1PrintDirection=2 \nSlot2PrintDirection=1 \n");
  EXPECT_EQ(ini.printer, 1);
  EXPECT_EQ(ini.color, 2);
  EXPECT_EQ(ini.passes, 8);
  EXPECT_EQ(ini.slot1_direction, 2);
}

void ExpectNothingAsked(const EngineIni& ini) {
  EXPECT_FALSE(ini.printer.has_value());
  EXPECT_EQ(ini.color, 0);
  EXPECT_EQ(ini.passes, 0);
  EXPECT_EQ(ini.slot1_direction, -1);
}

TEST(EngineIniTest, AnEmptyFileAsksForNothing) { ExpectNothingAsked(Parse("")); }

TEST(EngineIniTest, APrinterThatIsThereIsTold) {
  EXPECT_EQ(Parse("[Configuration]\nPrinter=0\n").printer, 0);
  EXPECT_EQ(Parse("[Configuration]\nPrinter=2 \n").printer, 2);
  EXPECT_EQ(Parse("[Configuration]\nPrinter=one\n").printer, -1);
  EXPECT_EQ(Parse("[Configuration]\nPrinter=\n").printer, -1);
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

class EngineIniFileTest : public ::testing::Test {
 protected:
  EngineIniFileTest()
      : path_(fs::temp_directory_path() / ("engine_ini_test." + std::to_string(getpid()))) {}
  ~EngineIniFileTest() override { fs::remove(path_); }

  // Expects the file to be refused, and what was known before to stay.
  void ExpectRefused() {
    EngineIni ini;
    ini.passes = 4;
    EXPECT_EQ(ReadEngineIni(path_, &ini), kBadConfiguration);
    EXPECT_EQ(ini.passes, 4);
  }
  const fs::path path_;
};

constexpr std::string_view kPhoto = "[Configuration]\nUseDebugSettings=1\nColor=2\n";

TEST_F(EngineIniFileTest, AMissingFileAsksForNothing) {
  EngineIni ini;
  ini.passes = 4;
  EXPECT_EQ(ReadEngineIni(path_, &ini), kOk);
  ExpectNothingAsked(ini);
  EXPECT_EQ(ReadEngineIni(path_ / "cfg.ini", &ini), kOk);
  ExpectNothingAsked(ini);
}

TEST_F(EngineIniFileTest, FilesOfUpTo64KibibytesAreRead) {
  EngineIni ini;
  std::ofstream(path_) << kPhoto << std::string((64 << 10) - kPhoto.size(), ' ');
  EXPECT_EQ(ReadEngineIni(path_, &ini), kOk);
  EXPECT_EQ(ini.color, 2);
  std::ofstream(path_, std::ios::app) << '\n';
  ExpectRefused();
  std::ofstream(path_) << kPhoto << std::string(64 << 20, 'x');
  ExpectRefused();
}

TEST_F(EngineIniFileTest, WhatHasNoEndIsRefused) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  ExpectRefused();
  fs::remove(path_);
  fs::create_symlink("/dev/zero", path_);
  ExpectRefused();
  fs::remove(path_);
  fs::create_directory(path_);
  ExpectRefused();
  fs::remove(path_);
  fs::create_symlink(path_, path_);
  ExpectRefused();
}

TEST_F(EngineIniFileTest, ALinkToAFileIsFollowed) {
  const fs::path target = path_.string() + ".target";
  std::ofstream(target) << kPhoto;
  fs::create_symlink(target, path_);
  EngineIni ini;
  EXPECT_EQ(ReadEngineIni(path_, &ini), kOk);
  EXPECT_EQ(ini.color, 2);
  fs::remove(target);
}

}  // namespace
}  // namespace zr7700::reference_engine
