// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/row_packing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zr7700::reference_engine {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using Bytes = std::vector<uint8_t>;

Bytes Granite(const Bytes& bytes) {
  Bytes out;
  CompressGranite(bytes, &out);
  return out;
}
Bytes Heron(const Bytes& bytes) {
  Bytes out;
  CompressHeron(bytes, &out);
  return out;
}
Bytes Pack(Family family, const Bytes& levels) {
  Bytes out;
  RowPacker(family).Append(levels, &out);
  return out;
}

TEST(CompressGraniteTest, CodesRunsAndLiterals) {
  EXPECT_THAT(Granite({}), ElementsAre());
  EXPECT_THAT(Granite({5}), ElementsAre(0, 5));
  EXPECT_THAT(Granite({1, 2, 3}), ElementsAre(2, 1, 2, 3));
  EXPECT_THAT(Granite({7, 7, 7}), ElementsAre(254, 7));
  EXPECT_THAT(Granite({1, 9, 9, 9, 9, 2, 2}), ElementsAre(0, 1, 253, 9, 1, 2, 2));
}

TEST(CompressGraniteTest, SplitsLongRunsAndLiterals) {
  EXPECT_THAT(Granite(Bytes(128, 4)), ElementsAre(129, 4));
  EXPECT_THAT(Granite(Bytes(129, 4)), ElementsAre(129, 4, 0, 4));
  EXPECT_THAT(Granite(Bytes(130, 4)), ElementsAre(129, 4, 255, 4));
  Bytes rising;
  for (int i = 0; i < 130; ++i) rising.push_back(static_cast<uint8_t>(i));
  Bytes expected = {127};
  expected.insert(expected.end(), rising.begin(), rising.begin() + 128);
  expected.insert(expected.end(), {1, 128, 129});
  EXPECT_THAT(Granite(rising), ElementsAreArray(expected));
}

TEST(CompressHeronTest, CodesZerosRunsAndLiterals) {
  EXPECT_THAT(Heron({0, 0}), ElementsAre(0x81));
  EXPECT_THAT(Heron({3, 0, 4}), ElementsAre(2, 3, 0, 4));
  EXPECT_THAT(Heron({3, 0, 0, 4, 4, 4}), ElementsAre(0, 3, 0x81, 0xC1, 4));
}

TEST(CompressHeronTest, SplitsLongRuns) {
  EXPECT_THAT(Heron(Bytes(64, 0)), ElementsAre(0xBF));
  EXPECT_THAT(Heron(Bytes(65, 0)), ElementsAre(0xBF, 0x80));
  EXPECT_THAT(Heron(Bytes(65, 6)), ElementsAre(0xFF, 6));
  EXPECT_THAT(Heron(Bytes(66, 6)), ElementsAre(0xFF, 6, 0, 6));
  EXPECT_THAT(Heron(Bytes(67, 6)), ElementsAre(0xFF, 6, 0xC0, 6));
}

// The walk skips quickly over bytes without runs; a run must be found wherever it begins.
TEST(CompressTest, FindsARunAtEveryPlace) {
  for (size_t place = 0; place < 40; ++place) {
    Bytes bytes;
    for (size_t i = 0; i < 60; ++i) bytes.push_back(static_cast<uint8_t>(i + 1));
    for (size_t i = 0; i < 3; ++i) bytes[place + i] = 200;
    Bytes tail(bytes.begin() + static_cast<ptrdiff_t>(place) + 3, bytes.end());
    Bytes granite;
    if (place > 0) granite = {static_cast<uint8_t>(place - 1)};
    granite.insert(granite.end(), bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(place));
    Bytes heron = granite;
    for (Bytes* out : {&granite, &heron}) {
      out->insert(out->end(), {static_cast<uint8_t>(out == &granite ? 254 : 0xC1), 200});
      out->push_back(static_cast<uint8_t>(tail.size() - 1));
      out->insert(out->end(), tail.begin(), tail.end());
    }
    EXPECT_EQ(Granite(bytes), granite) << place;
    EXPECT_EQ(Heron(bytes), heron) << place;
  }
}

TEST(RowPackerTest, GranitePacksFourCellsHighestFirst) {
  EXPECT_THAT(Pack(Family::kGranite, {1, 2, 3, 0, 3}), ElementsAre(1, 0x6C, 0xC0));
}

TEST(RowPackerTest, HeronPacksTwoPlanesLowestFirst) {
  // Low bits of 1 2 3 0 3: cells 0, 2, 4; high bits: cells 1, 2, 4.
  EXPECT_THAT(Pack(Family::kHeron, {1, 2, 3, 0, 3}), ElementsAre(1, 0x15, 0x16));
  EXPECT_THAT(Pack(Family::kHeron, {1, 0, 0, 0, 0, 0, 0, 1, 2}),
              ElementsAre(0, 0x81, 0x81, 0, 0x01));
}

TEST(AppendEscapedTest, EscapesTwoValuesOnly) {
  Bytes out = {9};
  AppendEscaped(Bytes{0x19, 0x1A, 0x1B, 0x1C}, &out);
  EXPECT_THAT(out, ElementsAre(9, 0x19, 0x1A, 0, 0x1A, 1, 0x1C));
}

TEST(AppendEscapedTest, EscapesAtEveryPlaceOfLongData) {
  for (size_t place = 0; place < 67; ++place) {
    Bytes bytes(67, 0x2A);
    bytes[place] = 0x1B;
    Bytes expected(place, 0x2A);
    expected.insert(expected.end(), {0x1A, 0x01});
    expected.insert(expected.end(), 66 - place, 0x2A);
    Bytes out;
    AppendEscaped(bytes, &out);
    EXPECT_EQ(out, expected);
  }
}

TEST(FindDropsTest, TrimsBothEndsAndCounts) {
  for (size_t before = 0; before < 20; ++before)
    for (size_t after = 0; after < 20; ++after) {
      Bytes levels(before, 0);
      levels.insert(levels.end(), {2, 0, 1});
      levels.insert(levels.end(), after, 0);
      const Drops drops = FindDrops(levels);
      EXPECT_EQ(drops.first_cell, before);
      EXPECT_THAT(drops.levels, ElementsAre(2, 0, 1));
      EXPECT_EQ(drops.count, 2U);
    }
  EXPECT_EQ(FindDrops(Bytes(100, 0)).count, 0U);
  EXPECT_EQ(FindDrops({}).count, 0U);
}

}  // namespace
}  // namespace zr7700::reference_engine
