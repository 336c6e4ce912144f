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

void ExpectThePage(const std::unique_ptr<RasterStream>& raster) {
  ASSERT_NE(raster, nullptr);
  cups_page_header2_t header;
  ASSERT_EQ(raster->NextPage(header), RasterStream::Next::kPage);
  EXPECT_EQ(header.cupsBytesPerLine, 6U);
  std::vector<unsigned char> line(6);
  EXPECT_TRUE(raster->ReadPixels(line));
  EXPECT_THAT(line, ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_TRUE(raster->ReadPixels(line));
  EXPECT_THAT(line, ElementsAre(7, 8, 9, 10, 11, 12));
  EXPECT_EQ(raster->NextPage(header), RasterStream::Next::kEnd);
}

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

TEST_F(RasterInput, ReadsTheNamedFile) { ExpectThePage(OpenRaster(WriteFile().c_str())); }

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
    ExpectThePage(OpenRaster(nullptr));
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
  ExpectThePage(OpenRaster(path.c_str()));
  writer.join();
}

TEST_F(RasterInput, LogsAFileThatCannotBeOpened) {
  const test::LogCapture log(1);
  EXPECT_EQ(OpenRaster(folder_.PathOf("missing").c_str()), nullptr);
  EXPECT_THAT(log.Lines(), ElementsAre("Unable to open raster file - No such file or directory"));
}

TEST_F(RasterInput, WhatHoldsNoRasterHasNoPages) {
  for (const std::string& content :
       {std::string(), std::string("x"), std::string("%PDF-1.7\n"), std::string(5000, '\0')}) {
    const std::string path = folder_.WriteFile("file", content);
    const auto raster = OpenRaster(path.c_str());
    ASSERT_NE(raster, nullptr);
    cups_page_header2_t header;
    EXPECT_EQ(raster->NextPage(header), RasterStream::Next::kEnd);
  }
}

TEST_F(RasterInput, AFolderHasNoPages) {
  if (const auto raster = OpenRaster(folder_.path().c_str())) {
    cups_page_header2_t header;
    EXPECT_EQ(raster->NextPage(header), RasterStream::Next::kEnd);
  }
}

// Runs `read` on a stream whose writer says nothing more after `count` bytes of a page, and cancels
// the job meanwhile.
void CancelWhileReading(size_t count, const std::function<void(RasterStream&)>& read) {
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
  const auto raster = OpenRaster(nullptr);
  ASSERT_NE(raster, nullptr);
  const auto start = std::chrono::steady_clock::now();
  read(*raster);
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(1000));
  EXPECT_TRUE(CancelRequested());
}

TEST_F(RasterInput, ACancelEndsAWaitingHeaderRead) {
  test::InOwnProcess([] {
    CancelWhileReading(4 + 100, [](RasterStream& raster) {
      cups_page_header2_t header;
      EXPECT_EQ(raster.NextPage(header), RasterStream::Next::kBroken);
    });
  });
}

TEST_F(RasterInput, ACancelEndsAWaitingLineRead) {
  test::InOwnProcess([] {
    CancelWhileReading(4 + sizeof(cups_page_header2_t) + 3, [](RasterStream& raster) {
      cups_page_header2_t header;
      ASSERT_EQ(raster.NextPage(header), RasterStream::Next::kPage);
      std::array<unsigned char, 6> line;
      EXPECT_FALSE(raster.ReadPixels(line));
    });
  });
}

TEST_F(RasterInput, ACancelFailsReadsEvenWithDataThere) {
  test::InOwnProcess([this] {
    const std::string path = WriteFile();
    InstallCancelHandler();
    raise(SIGTERM);
    const auto raster = OpenRaster(path.c_str());
    ASSERT_NE(raster, nullptr);
    cups_page_header2_t header;
    EXPECT_EQ(raster->NextPage(header), RasterStream::Next::kEnd);
  });
}

TEST_F(RasterInput, ATruncatedPageEndsWithItsData) {
  const std::string page = test::ReadFile(WriteFile());
  const std::string path = folder_.WriteFile("cut", page.substr(0, page.size() - 3));
  const auto raster = OpenRaster(path.c_str());
  ASSERT_NE(raster, nullptr);
  cups_page_header2_t header;
  ASSERT_EQ(raster->NextPage(header), RasterStream::Next::kPage);
  std::array<unsigned char, 6> line;
  EXPECT_TRUE(raster->ReadPixels(line));
  EXPECT_FALSE(raster->ReadPixels(line));
}

}  // namespace
}  // namespace zr7700
