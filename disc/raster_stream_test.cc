// Streams that libcups writes itself, read in pieces of any size.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/raster_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace zr7700 {
namespace {

using Next = RasterStream::Next;
using Lines = std::vector<std::vector<uint8_t>>;

cups_page_header2_t Header(unsigned width, unsigned height) {
  cups_page_header2_t header = {};
  strcpy(header.MediaColor, "white");
  header.cupsWidth = width;
  header.cupsHeight = height;
  header.cupsBitsPerColor = 8;
  header.cupsBitsPerPixel = 24;
  header.cupsBytesPerLine = 3 * width;
  header.cupsNumColors = 3;
  header.cupsColorSpace = CUPS_CSPACE_SRGB;
  return header;
}

// Runs of equal pixels, single ones and long stretches without runs, from line to line.
Lines Picture(unsigned width, unsigned height) {
  Lines lines(height, std::vector<uint8_t>(size_t{3} * width));
  for (unsigned y = 0; y < height; ++y) {
    for (unsigned x = 0; x < width; ++x) {
      const unsigned tone = y % 3 == 0 ? x / 7 : y % 3 == 1 ? x * 37 + y : 5;
      for (unsigned c = 0; c < 3; ++c) lines[y][3 * x + c] = static_cast<uint8_t>(tone + c);
    }
  }
  return lines;
}

ssize_t Collect(void* text, unsigned char* bytes, size_t count) {
  static_cast<std::string*>(text)->append(reinterpret_cast<char*>(bytes), count);
  return static_cast<ssize_t>(count);
}

// Two pages of 200 x 20 and of 3 x 4.
std::string TwoPages(cups_mode_t mode) {
  std::string bytes;
  cups_raster_t* const stream = cupsRasterOpenIO(Collect, &bytes, mode);
  for (const auto& [width, height] : {std::pair(200U, 20U), std::pair(3U, 4U)}) {
    cups_page_header2_t header = Header(width, height);
    cupsRasterWriteHeader2(stream, &header);
    for (std::vector<uint8_t>& line : Picture(width, height)) {
      cupsRasterWritePixels(stream, line.data(), header.cupsBytesPerLine);
    }
  }
  cupsRasterClose(stream);
  return bytes;
}

// The same with the short headers of the first version, which libcups no longer writes.
std::string TwoOldPages() {
  const std::string bytes = TwoPages(CUPS_RASTER_WRITE);
  const size_t second = 4 + sizeof(cups_page_header2_t) + size_t{3} * 200 * 20;
  const auto page = [&bytes](size_t at, size_t pixel_bytes) {
    return bytes.substr(at, sizeof(cups_page_header_t)) +
           bytes.substr(at + sizeof(cups_page_header2_t), pixel_bytes);
  };
  const uint32_t sync_word = CUPS_RASTER_SYNCv1;
  return std::string(reinterpret_cast<const char*>(&sync_word), 4) + page(4, 3 * 200 * 20) +
         page(second, 3 * 3 * 4);
}

// Gives a text in pieces.
struct PieceSource {
  static ssize_t Read(void* context, unsigned char* bytes, size_t count) {
    auto& source = *static_cast<PieceSource*>(context);
    const std::string piece = source.text.substr(source.at, std::min(count, source.piece_bytes));
    memcpy(bytes, piece.data(), piece.size());
    source.at += piece.size();
    return static_cast<ssize_t>(piece.size());
  }

  std::string text;
  size_t piece_bytes = SIZE_MAX;
  size_t at = 0;
};

Lines ReadLines(RasterStream& stream, const cups_page_header2_t& header) {
  Lines lines;
  std::vector<uint8_t> line(header.cupsBytesPerLine);
  for (unsigned y = 0; y < header.cupsHeight && stream.ReadPixels(line); ++y) lines.push_back(line);
  return lines;
}

void ExpectTwoPages(const std::string& text, size_t piece_bytes) {
  PieceSource source{text, piece_bytes};
  RasterStream stream(PieceSource::Read, &source);
  ASSERT_TRUE(stream.IsRaster());
  cups_page_header2_t header;
  ASSERT_EQ(stream.NextPage(header), Next::kPage);
  EXPECT_STREQ(header.MediaColor, "white");
  EXPECT_EQ(ReadLines(stream, header), Picture(200, 20));
  ASSERT_EQ(stream.NextPage(header), Next::kPage);
  EXPECT_EQ(header.cupsWidth, 3U);
  EXPECT_EQ(ReadLines(stream, header), Picture(3, 4));
  EXPECT_EQ(stream.NextPage(header), Next::kEnd);
}

TEST(RasterStream, ReadsEveryFormInPiecesOfAnySize) {
  for (const std::string& text :
       {TwoPages(CUPS_RASTER_WRITE), TwoPages(CUPS_RASTER_WRITE_COMPRESSED),
        TwoPages(CUPS_RASTER_WRITE_PWG), TwoOldPages()}) {
    for (const size_t piece_bytes : {size_t{1}, size_t{7}, size_t{1000}, SIZE_MAX}) {
      ExpectTwoPages(text, piece_bytes);
    }
  }
}

// Where the second header of a stream begins: the last 4 bytes of the word "white" show it.
size_t SecondHeader(const std::string& text) { return text.rfind("white") - 64; }

constexpr size_t kBitsPerPixelAt = 388;
constexpr size_t kBytesPerLineAt = 392;

void Put(std::string& text, size_t at, uint32_t word, bool is_big_endian) {
  for (int i = 0; i < 4; ++i) {
    const int shift = is_big_endian ? 24 - 8 * i : 8 * i;
    text[at + static_cast<size_t>(i)] = static_cast<char>(word >> shift);
  }
}

// The stream with a line of the second page made that long.
std::string WithLine(cups_mode_t mode, uint32_t bytes, uint32_t bits = 24) {
  std::string text = TwoPages(mode);
  const bool is_big_endian = mode == CUPS_RASTER_WRITE_PWG;
  Put(text, SecondHeader(text) + kBitsPerPixelAt, bits, is_big_endian);
  Put(text, SecondHeader(text) + kBytesPerLineAt, bytes, is_big_endian);
  return text;
}

TEST(RasterStream, ALineThatIsTooLongEndsTheStream) {
  for (const cups_mode_t mode :
       {CUPS_RASTER_WRITE, CUPS_RASTER_WRITE_COMPRESSED, CUPS_RASTER_WRITE_PWG}) {
    for (const uint32_t bytes : {393'219U, 0x7FFFFFFEU, 0xFFFFFFFFU}) {
      PieceSource source{WithLine(mode, bytes)};
      RasterStream stream(PieceSource::Read, &source);
      cups_page_header2_t header;
      ASSERT_EQ(stream.NextPage(header), Next::kPage);
      EXPECT_EQ(ReadLines(stream, header), Picture(200, 20));
      ASSERT_EQ(stream.NextPage(header), Next::kTooLong) << mode << " " << bytes;
      EXPECT_EQ(header.cupsBytesPerLine, bytes);
      EXPECT_EQ(header.cupsBitsPerPixel, 24U);
      EXPECT_STREQ(header.MediaColor, "white");
      uint8_t byte;
      EXPECT_FALSE(stream.ReadPixels({&byte, 1}));
      EXPECT_EQ(stream.NextPage(header), Next::kEnd);
    }
  }
}

void ExpectBrokenAfterAPage(const std::string& text) {
  PieceSource source{text};
  RasterStream stream(PieceSource::Read, &source);
  cups_page_header2_t header;
  ASSERT_EQ(stream.NextPage(header), Next::kPage);
  ReadLines(stream, header);
  EXPECT_EQ(stream.NextPage(header), Next::kBroken);
}

TEST(RasterStream, AHeaderThatMakesNoSenseIsBroken) {
  ExpectBrokenAfterAPage(WithLine(CUPS_RASTER_WRITE, 10));  // no whole number of pixels
}

TEST(RasterStream, AStreamThatIsCutOffIsBroken) {
  const std::string text = TwoPages(CUPS_RASTER_WRITE_COMPRESSED);
  ExpectBrokenAfterAPage(text.substr(0, SecondHeader(text) + 100));
}

TEST(RasterStream, WhatIsNoRasterHasNoPages) {
  for (const std::string& text : {std::string(), std::string("Ra"), std::string("%PDF-1.7\n")}) {
    PieceSource source{text};
    RasterStream stream(PieceSource::Read, &source);
    EXPECT_FALSE(stream.IsRaster());
    EXPECT_EQ(stream.IsEmpty(), text.empty());
    cups_page_header2_t header;
    EXPECT_EQ(stream.NextPage(header), Next::kEnd);
  }
}

}  // namespace
}  // namespace zr7700
