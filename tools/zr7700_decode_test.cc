// Runs the program on streams put together by hand.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "virtual_printer/stream_builder.h"

namespace zr7700::printer {
namespace {

struct Outcome {
  int status = -1;
  std::string text;
};

class DecodeProgram : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(mkdtemp(folder_), nullptr); }
  void TearDown() override {
    unlink(Path().c_str());
    rmdir(folder_);
  }
  std::string Path() const { return std::string(folder_) + "/stream"; }

  Outcome Run(const Bytes& stream, const std::string& arguments) const {
    std::ofstream(Path(), std::ios::binary)
        .write(reinterpret_cast<const char*>(stream.data()),
               static_cast<std::streamsize>(stream.size()));
    return RunCommand(arguments + " " + Path());
  }

  static Outcome RunCommand(const std::string& arguments) {
    Outcome outcome;
    FILE* pipe = popen((std::string(ZR7700_DECODE) + " " + arguments + " 2>&1").c_str(), "r");
    char block[4096];
    for (size_t count; (count = fread(block, 1, sizeof block, pipe)) > 0;) {
      outcome.text.append(block, count);
    }
    outcome.status = WEXITSTATUS(pclose(pipe));
    return outcome;
  }

  char folder_[32] = "/tmp/zr7700-decode-XXXXXX";
};

constexpr char kBeforeTheRow[] =
    "         0  print header: destination 1, ink warning 166250000\n"
    "        16  document-start: family Granite, version 1, job code 142\n"
    "        24  page-start: number 1, resolution 600 x 600, left margin 1916, size 100 x 60, "
    "reach 5100, quality 3, media 1, tray 2, intent 1, passes 1, direction 2, mixing 1, "
    "sharpening 6, nozzles 192, pitch 1, planes 3, alignment 0=0 1=0 2=0 3=0 6=0 14=0 7=0 9=0\n"
    "        70  feed: 138 (0.1150 inch)\n"
    "        78  pass-start: number 0, head line 0, forward, column step 1\n";

TEST_F(DecodeProgram, PrintsEveryItemWithItsOffset) {
  StreamBuilder stream('G');
  stream.WholePage();
  const Outcome outcome = Run(stream.bytes(), "--rows");
  EXPECT_EQ(outcome.status, 0);
  const std::string row =
      "        92  row: nozzle 0, plane C, line 0, first column 0 (on the page 0), cells 1, "
      "drops small 0 medium 0 large 1\n";
  EXPECT_EQ(outcome.text.substr(0, sizeof kBeforeTheRow - 1 + row.size()), kBeforeTheRow + row);
  const std::string rest = outcome.text.substr(sizeof kBeforeTheRow - 1 + row.size());
  EXPECT_TRUE(rest.starts_with("       105  page-end: passes 1, rows 1, drops C 1 M 0 Y 0, CRC 0x"))
      << rest;
  EXPECT_TRUE(rest.ends_with("document-end: pages ended 1, aborted 0\n")) << rest;
}

TEST_F(DecodeProgram, RowsAreLeftOutUnlessAskedFor) {
  StreamBuilder stream('G');
  stream.WholePage();
  const Outcome outcome = Run(stream.bytes(), "");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.text.find("row:"), outcome.text.npos);
}

TEST_F(DecodeProgram, AViolationIsPrintedAndFailsTheRun) {
  StreamBuilder stream('G');
  stream.Header().Raw({0}).Header();
  const Outcome outcome = Run(stream.bytes(), "");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(
      outcome.text.find("        16  VIOLATION: An item must begin with 0x1B, not with 0x00.\n"),
      outcome.text.npos)
      << outcome.text;
}

TEST_F(DecodeProgram, WhatCannotBeReadIsSaid) {
  EXPECT_EQ(RunCommand("/nowhere/at/all").status, 2);
  EXPECT_EQ(RunCommand("/nowhere/at/all").text, "zr7700-decode: The stream cannot be read.\n");
  EXPECT_EQ(RunCommand("--colour").status, 2);
  EXPECT_EQ(RunCommand("--help").status, 0);
}

}  // namespace
}  // namespace zr7700::printer
