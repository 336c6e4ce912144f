// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/raster_input.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "base/cancel_signal.h"
#include "tests/support/later_cancel.h"
#include "tests/support/log_capture.h"
#include "tests/support/own_process.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;

cups_page_header2_t Header() {
  cups_page_header2_t header = {};
  header.cupsWidth = 2;
  header.cupsHeight = 2;
  header.cupsBitsPerColor = 8;
  header.cupsBitsPerPixel = 24;
  header.cupsBytesPerLine = 6;
  header.cupsNumColors = 3;
  header.cupsColorSpace = CUPS_CSPACE_RGB;
  return header;
}

// Writes a page of two lines, 1 to 6 and 7 to 12.
void WritePage(int descriptor) {
  cups_raster_t* raster = cupsRasterOpen(descriptor, CUPS_RASTER_WRITE);
  cups_page_header2_t header = Header();
  cupsRasterWriteHeader2(raster, &header);
  std::array<unsigned char, 12> pixels;
  for (size_t i = 0; i < pixels.size(); i++) pixels[i] = static_cast<unsigned char>(i + 1);
  cupsRasterWritePixels(raster, pixels.data(), 6);
  cupsRasterWritePixels(raster, pixels.data() + 6, 6);
  cupsRasterClose(raster);
}

void ExpectThePage(cups_raster_t* raster) {
  cups_page_header2_t header;
  ASSERT_NE(cupsRasterReadHeader2(raster, &header), 0U);
  EXPECT_EQ(header.cupsBytesPerLine, 6U);
  std::vector<unsigned char> line(6);
  EXPECT_EQ(cupsRasterReadPixels(raster, line.data(), 6), 6U);
  EXPECT_THAT(line, ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_EQ(cupsRasterReadPixels(raster, line.data(), 6), 6U);
  EXPECT_THAT(line, ElementsAre(7, 8, 9, 10, 11, 12));
  EXPECT_EQ(cupsRasterReadHeader2(raster, &header), 0U);
}

// The filter keeps its stream until exit; a test gives its own back.
struct OpenedRaster {
  ~OpenedRaster() {
    if (stream != nullptr) cupsRasterClose(stream);
  }
  cups_raster_t* stream = nullptr;
};

class RasterInput : public ::testing::Test {
 protected:
  std::string WriteFile() const {
    const std::string path = folder_.PathOf("page.ras");
    const int file = open(path.c_str(), O_WRONLY | O_CREAT, 0600);
    WritePage(file);
    close(file);
    return path;
  }

  test::TemporaryFolder folder_;
};

TEST_F(RasterInput, ReadsTheNamedFile) {
  OpenedRaster opened;
  cups_raster_t*& raster = opened.stream;
  ASSERT_TRUE(OpenRaster(WriteFile().c_str(), raster));
  ExpectThePage(raster);
}

TEST_F(RasterInput, ReadsStandardInputWithoutAName) {
  test::InOwnProcess([] {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    dup2(ends[0], 0);
    std::thread writer([&] {
      std::this_thread::sleep_for(milliseconds(30));
      WritePage(ends[1]);
      close(ends[1]);
    });
    OpenedRaster opened;
    cups_raster_t*& raster = opened.stream;
    ASSERT_TRUE(OpenRaster(nullptr, raster));
    ExpectThePage(raster);
    writer.join();
  });
}

TEST_F(RasterInput, WaitsForTheWriterOfAFifo) {
  const std::string path = folder_.PathOf("fifo");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::thread writer([&] {
    const int file = open(path.c_str(), O_WRONLY);
    std::this_thread::sleep_for(milliseconds(30));
    WritePage(file);
    close(file);
  });
  OpenedRaster opened;
  cups_raster_t*& raster = opened.stream;
  ASSERT_TRUE(OpenRaster(path.c_str(), raster));
  ExpectThePage(raster);
  writer.join();
}

TEST_F(RasterInput, LogsAFileThatCannotBeOpened) {
  const test::LogCapture log(1);
  OpenedRaster opened;
  cups_raster_t*& raster = opened.stream;
  EXPECT_FALSE(OpenRaster(folder_.PathOf("missing").c_str(), raster));
  EXPECT_THAT(log.Lines(), ElementsAre("Unable to open raster file - No such file or directory"));
}

TEST_F(RasterInput, WhatHoldsNoRasterHasNoPages) {
  for (const std::string& content :
       {std::string(), std::string("x"), std::string("%PDF-1.7\n"), std::string(5000, '\0')}) {
    const std::string path = folder_.WriteFile("file", content);
    OpenedRaster opened;
    cups_raster_t*& raster = opened.stream;
    EXPECT_TRUE(OpenRaster(path.c_str(), raster));
    cups_page_header2_t header;
    EXPECT_EQ(cupsRasterReadHeader2(raster, &header), 0U);
  }
}

TEST_F(RasterInput, AFolderHasNoPages) {
  OpenedRaster opened;
  cups_raster_t*& raster = opened.stream;
  if (OpenRaster(folder_.path().c_str(), raster)) {
    cups_page_header2_t header;
    EXPECT_EQ(cupsRasterReadHeader2(raster, &header), 0U);
  }
}

// Runs `read` on a stream whose writer says nothing more after `count` bytes of a page, and cancels
// the job meanwhile.
void CancelWhileReading(size_t count, const std::function<void(cups_raster_t*)>& read) {
  const test::TemporaryFolder folder;
  const std::string path = folder.PathOf("page.ras");
  const int file = open(path.c_str(), O_WRONLY | O_CREAT, 0600);
  WritePage(file);
  close(file);
  const std::string page = test::ReadFile(path);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  dup2(ends[0], 0);
  ASSERT_EQ(write(ends[1], page.data(), count), static_cast<ssize_t>(count));
  InstallCancelHandler();
  test::CancelIn(100);
  OpenedRaster opened;
  cups_raster_t*& raster = opened.stream;
  ASSERT_TRUE(OpenRaster(nullptr, raster));
  const auto start = std::chrono::steady_clock::now();
  read(raster);
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(1000));
  EXPECT_TRUE(CancelRequested());
}

TEST_F(RasterInput, ACancelEndsAWaitingHeaderRead) {
  test::InOwnProcess([] {
    CancelWhileReading(4 + 100, [](cups_raster_t* raster) {
      cups_page_header2_t header;
      EXPECT_EQ(cupsRasterReadHeader2(raster, &header), 0U);
    });
  });
}

TEST_F(RasterInput, ACancelEndsAWaitingLineRead) {
  test::InOwnProcess([] {
    CancelWhileReading(4 + sizeof(cups_page_header2_t) + 3, [](cups_raster_t* raster) {
      cups_page_header2_t header;
      ASSERT_NE(cupsRasterReadHeader2(raster, &header), 0U);
      std::array<unsigned char, 6> line;
      EXPECT_EQ(cupsRasterReadPixels(raster, line.data(), 6), 0U);
    });
  });
}

TEST_F(RasterInput, ACancelFailsReadsEvenWithDataThere) {
  test::InOwnProcess([this] {
    const std::string path = WriteFile();
    InstallCancelHandler();
    raise(SIGTERM);
    OpenedRaster opened;
    cups_raster_t*& raster = opened.stream;
    EXPECT_TRUE(OpenRaster(path.c_str(), raster));
    cups_page_header2_t header;
    EXPECT_EQ(cupsRasterReadHeader2(raster, &header), 0U);
  });
}

TEST_F(RasterInput, ATruncatedPageEndsWithItsData) {
  const std::string page = test::ReadFile(WriteFile());
  const std::string path = folder_.WriteFile("cut", page.substr(0, page.size() - 3));
  OpenedRaster opened;
  cups_raster_t*& raster = opened.stream;
  ASSERT_TRUE(OpenRaster(path.c_str(), raster));
  cups_page_header2_t header;
  ASSERT_NE(cupsRasterReadHeader2(raster, &header), 0U);
  std::array<unsigned char, 6> line;
  EXPECT_EQ(cupsRasterReadPixels(raster, line.data(), 6), 6U);
  EXPECT_EQ(cupsRasterReadPixels(raster, line.data(), 6), 0U);
}

}  // namespace
}  // namespace zr7700
