// The loop between a real raster stream and a trace of what it does to the engine, the printer's
// check and the status thread. (A page of height 0 cannot be had: CUPS itself refuses its header.)
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/page_loop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "base/cancel_signal.h"
#include "engine/band.h"
#include "engine/document.h"
#include "engine/page.h"
#include "status/job_check.h"
#include "status/status_thread.h"
#include "status/test_sleep.h"
#include "tests/support/log_capture.h"
#include "tests/support/own_process.h"
#include "tests/support/stream_capture.h"

namespace zr7700 {

// What the loop did, in order; and how the others answer.
static struct {
  std::vector<std::string> events;
  std::vector<std::string> lines;  // each as "y: bytes", in hexadecimal
  bool check = true;
  bool start_page = true;
  bool end_page = true;
  bool restart = true;
  bool send = true;
  std::function<void(uint32_t)> on_line;
} stage;

static bool Note(const std::string& event, bool answer) {
  stage.events.push_back(event);
  return answer;
}

bool StartOfPageJobCheck(int page) { return Note("check " + std::to_string(page), stage.check); }
bool StartPage(const cups_page_header2_t& header) {
  return Note("page of " + std::to_string(header.cupsHeight), stage.start_page);
}
bool StartStatusThread(bool suppress_utility) {
  return Note(suppress_utility ? "watch silently" : "watch", false);  // the answer is ignored
}
void StopStatusThread() { Note("stop", true); }
bool EndPage() { return Note("end", stage.end_page); }
bool RestartDocument() { return Note("restart", stage.restart); }
bool SendLine(const JobVariables&, uint8_t* line, uint32_t pixel_count, uint32_t y) {
  std::string text = std::to_string(y) + ":";
  for (uint32_t i = 0; i < pixel_count * 4; i++) {
    char byte[8];
    snprintf(byte, sizeof byte, " %02x", line[i]);
    text += byte;
  }
  stage.lines.push_back(text);
  if (stage.on_line) stage.on_line(y);
  return stage.send;
}

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

struct Page {
  unsigned height = 1;
  unsigned copies = 1;
  unsigned lines = height;  // that really follow
  unsigned bits_per_color = 8;
};

class PageLoop : public ::testing::Test {
 protected:
  PageLoop() : file_(tmpfile()) {
    stage = {};
    test::ResetSleeps();
  }
  ~PageLoop() override { fclose(file_); }

  // Two pixels a line; line y is the bytes 16y+1 to 16y+6, modulo 256.
  void Write(const std::vector<Page>& pages) const {
    cups_raster_t* raster = cupsRasterOpen(fileno(file_), CUPS_RASTER_WRITE);
    for (const Page& page : pages) WritePage(raster, page);
    cupsRasterClose(raster);
  }

  static void WritePage(cups_raster_t* raster, const Page& page) {
    cups_page_header2_t header = {};
    header.cupsWidth = 2;
    header.cupsHeight = page.height;
    header.cupsBitsPerColor = page.bits_per_color;
    header.cupsBitsPerPixel = page.bits_per_color * 3;
    header.cupsBytesPerLine = (page.bits_per_color * 6 + 7) / 8;
    header.cupsNumColors = 3;
    header.cupsColorSpace = CUPS_CSPACE_RGB;
    header.NumCopies = page.copies;
    snprintf(header.MediaColor, sizeof header.MediaColor, "white");
    snprintf(header.MediaClass, sizeof header.MediaClass, "disc");
    snprintf(header.MediaType, sizeof header.MediaType, "matte");
    snprintf(header.OutputType, sizeof header.OutputType, "label");
    cupsRasterWriteHeader2(raster, &header);
    for (unsigned y = 0; y < page.lines; y++) {
      std::vector<unsigned char> line(header.cupsBytesPerLine);
      for (unsigned i = 0; i < line.size(); i++) {
        line[i] = static_cast<unsigned char>(16 * y + i + 1);
      }
      cupsRasterWritePixels(raster, line.data(), header.cupsBytesPerLine);
    }
  }

  static ssize_t ReadFile(void* file, unsigned char* bytes, size_t count) {
    return read(fileno(static_cast<FILE*>(file)), bytes, count);
  }

  // Runs the loop; standard error stays in told_.
  LoopEnd Print(bool suppress = false) {
    lseek(fileno(file_), 0, SEEK_SET);
    RasterStream raster(ReadFile, file_);
    test::StderrCapture capture;
    const LoopEnd end = PrintPages(raster, suppress, page_count_);
    told_ = capture.Take();
    return end;
  }

  FILE* file_;
  int page_count_ = 0;
  std::string told_;
  test::LogCapture log_;
};

TEST_F(PageLoop, PrintsAPageInItsOrder) {
  Write({{.height = 2}});
  EXPECT_EQ(Print(), LoopEnd::kFinished);
  EXPECT_EQ(page_count_, 1);
  EXPECT_THAT(stage.events, ElementsAre("page of 2", "watch", "end", "restart", "stop"));
  EXPECT_THAT(stage.lines, ElementsAre("0: 01 02 03 00 04 05 06 00", "1: 11 12 13 00 14 15 16 00"));
}

TEST_F(PageLoop, WaitsAFifthOfASecondForTheThread) {
  Write({{}, {}});
  Print();
  EXPECT_EQ(test::OtherSleeps(), 2);
  EXPECT_EQ(test::TicksSlept() + test::SecondsSlept(), 0);
}

TEST_F(PageLoop, LogsAPage) {
  Write({{.height = 2}});
  Print();
  const std::vector<std::string> lines = log_.Lines();
  ASSERT_THAT(lines, SizeIs(8));
  EXPECT_EQ(lines[0], "     cupsColorSpace 1 ");
  EXPECT_EQ(lines[1], "     cupsColorOrder 0 ");
  EXPECT_EQ(lines[2], "     cupsColorOrder white disc matte label ");
  EXPECT_THAT(lines[3], StartsWith("     Allocated line buffer 6 bytes at "));
  EXPECT_THAT(lines[4], StartsWith("     Allocated rgbmline buffer 8 bytes at "));
  EXPECT_EQ(lines[5], "     cupsHeight=2");
  EXPECT_EQ(lines[6], "     Printing page 1, 0% complete...");
  EXPECT_EQ(lines[7], "     Finished page 1...");
}

TEST_F(PageLoop, PageLineHasNoLineEnd) {
  Write({{.copies = 1}});
  Print();
  EXPECT_EQ(told_, "     PAGE: 1 1");
}

TEST_F(PageLoop, PageLineCountsPagesAndTakesTheCopiesOfTheRaster) {
  Write({{.copies = 3}, {.copies = 4}});
  Print();
  EXPECT_EQ(told_, "     PAGE: 1 3     PAGE: 2 4");
}

TEST_F(PageLoop, ChecksThePrinterBeforeEveryPageButTheFirst) {
  Write({{}, {}, {}});
  EXPECT_EQ(Print(), LoopEnd::kFinished);
  EXPECT_EQ(page_count_, 3);
  EXPECT_THAT(stage.events, ElementsAre("page of 1", "watch", "end", "restart", "stop", "check 1",
                                        "page of 1", "watch", "end", "restart", "stop", "check 2",
                                        "page of 1", "watch", "end", "restart", "stop"));
  EXPECT_THAT(log_.Lines(), Contains("     Checking Status on Page 2"));
}

TEST_F(PageLoop, AFailedCheckAbandonsTheJob) {
  Write({{}, {}});
  stage.check = false;
  EXPECT_EQ(Print(), LoopEnd::kAbandoned);
  EXPECT_EQ(page_count_, 1);
  EXPECT_EQ(told_, "     PAGE: 1 1");
  EXPECT_EQ(stage.events.back(), "check 1");
}

TEST_F(PageLoop, TellsTheThreadToKeepSilent) {
  Write({{}});
  Print(true);
  EXPECT_THAT(stage.events, Contains("watch silently"));
}

TEST_F(PageLoop, WithoutPagesDoesNothing) {
  Write({});
  EXPECT_EQ(Print(), LoopEnd::kFinished);
  EXPECT_EQ(page_count_, 0);
  EXPECT_THAT(stage.events, IsEmpty());
}

TEST_F(PageLoop, WithoutARasterDoesNothing) {
  EXPECT_EQ(Print(), LoopEnd::kFinished);
  EXPECT_EQ(page_count_, 0);
}

TEST_F(PageLoop, ReportsEvery128Lines) {
  Write({{.height = 300}});
  Print();
  std::vector<std::string> reports;
  for (const std::string& line : log_.Lines()) {
    if (line.find("Printing page") != std::string::npos) reports.push_back(line);
  }
  // 128 of 300 is 42.67, 256 of 300 is 85.33 percent.
  EXPECT_THAT(reports, ElementsAre("     Printing page 1, 0% complete...",
                                   "     Printing page 1, 43% complete...",
                                   "     Printing page 1, 85% complete..."));
  EXPECT_THAT(stage.lines, SizeIs(300));
}

TEST_F(PageLoop, ResultOfALineIsIgnored) {
  Write({{.height = 3}});
  stage.send = false;
  Print();
  EXPECT_THAT(stage.lines, SizeIs(3));
  EXPECT_EQ(stage.events.back(), "stop");
}

TEST_F(PageLoop, APageCutShortIsEndedInOrder) {
  Write({{.height = 5, .lines = 2}});
  EXPECT_EQ(Print(), LoopEnd::kFinished);
  EXPECT_THAT(stage.lines, SizeIs(2));
  EXPECT_THAT(stage.events, ElementsAre("page of 5", "watch", "end", "restart", "stop"));
  EXPECT_THAT(log_.Lines(), Contains(StartsWith("     BAILING on print, num bytes read 0 ")));
  EXPECT_THAT(log_.Lines(), Not(Contains(StartsWith("     Bailing due"))));
}

TEST_F(PageLoop, AFailedPageStartEndsTheLoopWithThePageCounted) {
  Write({{}, {}});
  stage.start_page = false;
  EXPECT_EQ(Print(), LoopEnd::kFinished);
  EXPECT_EQ(page_count_, 1);
  EXPECT_THAT(stage.events, ElementsAre("page of 1"));
  EXPECT_EQ(told_, "     PAGE: 1 1");
}

TEST_F(PageLoop, AFailedPageEndEndsTheLoop) {
  Write({{}, {}});
  stage.end_page = false;
  EXPECT_EQ(Print(), LoopEnd::kFinished);
  EXPECT_THAT(stage.events, ElementsAre("page of 1", "watch", "end", "stop"));
  EXPECT_EQ(log_.Lines().back(), "     Bailing due to error or cancel, page 1...");
}

TEST_F(PageLoop, ResultOfThePostPageStepIsIgnored) {
  Write({{}, {}});
  stage.restart = false;
  EXPECT_EQ(Print(), LoopEnd::kFinished);
  EXPECT_EQ(page_count_, 2);
}

TEST_F(PageLoop, PixelsBelowAByteEndTheLoopBeforeThePageIsCounted) {
  Write({{.bits_per_color = 1}});
  EXPECT_EQ(Print(), LoopEnd::kFinished);
  EXPECT_EQ(page_count_, 0);
  EXPECT_EQ(told_, "");
  EXPECT_EQ(log_.Lines().back(), "     Bad cupsBitsPerPixel=3!");
}

TEST_F(PageLoop, ACancelEndsThePageWithoutItsEnd) {
  test::InOwnProcess([this] {
    InstallCancelHandler();
    Write({{.height = 10}, {}});
    stage.on_line = [](uint32_t y) {
      if (y == 3) raise(SIGTERM);
    };
    EXPECT_EQ(Print(), LoopEnd::kFinished);
    EXPECT_EQ(page_count_, 1);
    EXPECT_THAT(stage.lines, SizeIs(4));
    EXPECT_THAT(stage.events, Not(Contains("end")));
    EXPECT_THAT(stage.events, Not(Contains("restart")));
    EXPECT_EQ(stage.events.back(), "stop");
    const std::vector<std::string> lines = log_.Lines();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines[lines.size() - 2], "     Finished page 1...");
    EXPECT_EQ(lines.back(), "     Bailing due to error or cancel, page 1...");
    EXPECT_THAT(lines, Not(Contains(StartsWith("     BAILING"))));
  });
}

TEST_F(PageLoop, ACancelBeforeAPageBeginsNone) {
  test::InOwnProcess([this] {
    InstallCancelHandler();
    raise(SIGTERM);
    Write({{}});
    EXPECT_EQ(Print(), LoopEnd::kFinished);
    EXPECT_EQ(page_count_, 0);
  });
}

}  // namespace
}  // namespace zr7700
