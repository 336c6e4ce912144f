// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/printer_output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "tests/support/own_process.h"
#include "tests/support/stream_capture.h"

namespace zr7700 {
namespace {

void Put(std::string_view text) {
  WritePrinterOutput({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

TEST(PrinterOutput, WaitsInTheBuffer) {
  const test::StdoutCapture output;
  Put("a page");
  EXPECT_TRUE(HasBufferedOutput());
  EXPECT_EQ(output.Arrived(), "");
  FlushPrinterOutput();
  EXPECT_FALSE(HasBufferedOutput());
  EXPECT_EQ(output.Arrived(), "a page");
}

TEST(PrinterOutput, GoesOutInPiecesOfFourKiB) {
  const test::StdoutCapture output;
  const std::string text(10'000, 'x');
  Put(text);
  EXPECT_EQ(output.Arrived(), std::string(8192, 'x'));
  FlushPrinterOutput();
  EXPECT_EQ(output.Arrived(), text);
}

TEST(PrinterOutput, KeepsItsOrder) {
  const test::StdoutCapture output;
  std::string whole;
  for (int i = 0; i < 5000; i++) {
    const std::string text = std::to_string(i) + ' ';
    Put(text);
    whole += text;
  }
  FlushPrinterOutput();
  EXPECT_EQ(output.Arrived(), whole);
}

TEST(PrinterOutput, FlushingNothingWritesNothing) {
  const test::StdoutCapture output;
  FlushPrinterOutput();
  Put("");
  FlushPrinterOutput();
  EXPECT_EQ(output.Arrived(), "");
}

TEST(PrinterOutput, WhatFitsNeedsNoWrite) {
  test::InOwnProcess([] {
    const test::StdoutCapture output;
    EXPECT_TRUE(FitsOutputBuffer(4096));
    EXPECT_FALSE(FitsOutputBuffer(4097));
    Put("0123");
    EXPECT_TRUE(FitsOutputBuffer(4092));
    EXPECT_FALSE(FitsOutputBuffer(4093));
    EndOutputBuffer();
    EXPECT_FALSE(FitsOutputBuffer(1));
  });
}

// What meets an error is lost, and nobody is told; what comes later goes out.
TEST(PrinterOutput, GoesOnAfterAnError) {
  test::InOwnProcess([] {
    const int usual = dup(STDOUT_FILENO);
    const int full = open("/dev/full", O_WRONLY);
    dup2(full, STDOUT_FILENO);
    Put("lost");
    FlushPrinterOutput();
    EXPECT_FALSE(HasBufferedOutput());
    dup2(usual, STDOUT_FILENO);
    const test::StdoutCapture output;
    Put("kept");
    FlushPrinterOutput();
    EXPECT_EQ(output.Arrived(), "kept");
  });
}

TEST(PrinterOutput, AtTheEndNothingIsBufferedAnyMore) {
  test::InOwnProcess([] {
    const test::StdoutCapture output;
    Put("first");
    EndOutputBuffer();
    EXPECT_EQ(output.Arrived(), "first");
    Put(", last");
    EXPECT_EQ(output.Arrived(), "first, last");
  });
}

}  // namespace
}  // namespace zr7700
