// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/row_data.h"

#include <gtest/gtest.h>

#include <random>

namespace zr7700::printer {
namespace {

using Bytes = std::vector<uint8_t>;

std::string Cells(Family family, const Bytes& data, size_t count) {
  Bytes scratch;
  Bytes cells;
  const std::string fault = UnpackRow(family, data, count, scratch, cells);
  if (!fault.empty()) return fault;
  std::string text;
  for (const uint8_t cell : cells) text.push_back(static_cast<char>('0' + cell));
  return text;
}

constexpr char kTooFew[] = "The row's data decode to too few bytes.";
constexpr char kTooMany[] = "The row's data decode to too many bytes.";
constexpr char kInside[] = "The row's data end inside a run.";

TEST(GraniteRow, FourCellsAByteFromTheTop) {
  // 0x1B = 00 01 10 11
  EXPECT_EQ(Cells(Family::kGranite, {0x00, 0x1B}, 4), "0123");
  EXPECT_EQ(Cells(Family::kGranite, {0x01, 0x1B, 0x80}, 5), "01232");
  EXPECT_EQ(Cells(Family::kGranite, {0x00, 0xC0}, 1), "3");
}

TEST(GraniteRow, Runs) {
  // 0xFF: the next byte twice; 0x81: 128 times.
  EXPECT_EQ(Cells(Family::kGranite, {0xFF, 0x55}, 8), "11111111");
  EXPECT_EQ(Cells(Family::kGranite, {0x81, 0xAA}, 512), std::string(512, '2'));
  EXPECT_EQ(Cells(Family::kGranite, {0xFE, 0x00, 0x00, 0x40}, 13), "0000000000001");
  EXPECT_EQ(Cells(Family::kGranite, {0x80, 0x00}, 4), "The row's data hold the control byte 0x80.");
}

TEST(HeronRow, TwoPlanesFromTheLowestBit) {
  // Cells 1, 2, 3, 0, ..., 3 at the ninth: low bits 1 0 1 ... | 1, high bits 0 1 1 ... | 1.
  EXPECT_EQ(Cells(Family::kHeron, {0x03, 0x05, 0x01, 0x06, 0x01}, 9), "123000003");
  EXPECT_EQ(Cells(Family::kHeron, {0x01, 0x01, 0x00}, 1), "1");
}

TEST(HeronRow, Runs) {
  // 0x80: one zero; 0xBF: 64 zeros; 0xC0: the next byte twice; 0xFF: 65 times.
  EXPECT_EQ(Cells(Family::kHeron, {0x80, 0x00, 0xFF}, 8), "22222222");
  EXPECT_EQ(Cells(Family::kHeron, {0xC0, 0xFF}, 8), "33333333");
  EXPECT_EQ(Cells(Family::kHeron, {0xBF}, 256), std::string(256, '0'));
  EXPECT_EQ(Cells(Family::kHeron, {0xFF, 0xFF, 0x83, 0xBC}, 8 * 65), std::string(8 * 65, '1'));
}

TEST(RowData, MustDecodeToExactlyTheCells) {
  for (const Family family : {Family::kGranite, Family::kHeron}) {
    EXPECT_EQ(Cells(family, {}, 4), kTooFew);
    EXPECT_EQ(Cells(family, {0x00, 0x00}, 17), kTooFew);
    EXPECT_EQ(Cells(family, {0x05, 0, 0, 0, 0, 0, 0}, 4), kTooMany);
    EXPECT_EQ(Cells(family, {0x02, 0x00}, 9), kInside);
    EXPECT_EQ(Cells(family, {0x00}, 4), kInside);
    EXPECT_EQ(Cells(family, {0xFF}, 4), kInside);
  }
}

TEST(RowData, UnusedBitsMustBeZero) {
  const char* sentence = "The unused bits of the row's last byte must be 0.";
  EXPECT_EQ(Cells(Family::kGranite, {0x00, 0xC1}, 3), sentence);
  EXPECT_EQ(Cells(Family::kGranite, {0x00, 0xC4}, 3), "301");
  EXPECT_EQ(Cells(Family::kHeron, {0x01, 0x02, 0x00}, 1), sentence);
  EXPECT_EQ(Cells(Family::kHeron, {0x01, 0x00, 0x80}, 7), sentence);
  EXPECT_EQ(Cells(Family::kHeron, {0x01, 0x00, 0x40}, 7), "0000002");
}

TEST(RowData, RandomDataNeverCrash) {
  for (unsigned seed = 0; seed < 5000; ++seed) {
    std::mt19937 random(seed);
    Bytes data(random() % 60);
    for (uint8_t& byte : data) byte = static_cast<uint8_t>(random());
    const size_t count = 1 + random() % 300;
    const std::string result =
        Cells(seed % 2 == 0 ? Family::kGranite : Family::kHeron, data, count);
    EXPECT_TRUE(result.size() == count || result.ends_with('.')) << seed;
  }
}

}  // namespace
}  // namespace zr7700::printer
