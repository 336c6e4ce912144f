// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/stream_decoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "virtual_printer/stream_listener.h"

namespace zr7700::printer {
namespace {

using testing::IsEmpty;

unsigned Dot(const PrintedPage& page, size_t column, size_t line) {
  return page.canvas.dots.at(line * page.canvas.width + column);
}

TEST(StreamDecoder, AWholePageOfEitherFamily) {
  for (const char family : {'G', 'H'}) {
    StreamBuilder stream(family);
    const uint16_t pitch = family == 'G' ? 1 : 2;
    stream.Header().DocumentStart().PageStart().Feed().Pass(0);
    if (family == 'G') {
      stream.Row(0, 'C', 3, "120003").Row(0, 'Y', 3, "3").Row(5, 'M', 99, "2");
    } else {
      stream.Row(0, 'Y', 3, "3").Row(5, 'M', 99, "2").Row(0, 'C', 3, "120003");
    }
    stream.Pass(10).Row(4, 'M', 3, "1").PageEnd().DocumentEnd();
    const Listener heard = Decode(stream.bytes());
    EXPECT_THAT(heard.violations, IsEmpty());
    ASSERT_EQ(heard.pages.size(), 1u);
    const PrintedPage& page = heard.pages[0];
    EXPECT_FALSE(page.spoilt);
    EXPECT_EQ(page.feed, 138);
    EXPECT_EQ(Dot(page, 3, 0), 1u + 3u * 16);  // small cyan and large yellow
    EXPECT_EQ(Dot(page, 4, 0), 2u);
    EXPECT_EQ(Dot(page, 5, 0), 0u);
    EXPECT_EQ(Dot(page, 8, 0), 3u);
    EXPECT_EQ(Dot(page, 99, 5u * pitch), 2u * 4);
    EXPECT_EQ(Dot(page, 3, 10u + 4u * pitch), 1u * 4);
    EXPECT_EQ(page.canvas.drops[0], (DropCounts{1, 1, 1}));
    EXPECT_EQ(page.canvas.drops[1], (DropCounts{1, 1, 0}));
    EXPECT_EQ(page.canvas.drops[2], (DropCounts{0, 0, 1}));
    EXPECT_EQ(std::count(page.canvas.dots.begin(), page.canvas.dots.end(), 0), 6000 - 5);
  }
}

TEST(StreamDecoder, PiecesOfAnySizeMeanTheSame) {
  StreamBuilder stream('H');
  // Margin 0x1B1A and head line 0x1B need escapes.
  stream.Header().DocumentStart().PageStart({.left_margin = 0x1B, .item6 = 0x1A}).Feed(0x1B1B);
  stream.Pass(0x1A).Row(1, 'M', 0x1B, "1230321").Pass(0x1B).Row(0, 'C', 0, "3");
  stream.PageEnd().DocumentEnd().Header();
  for (const size_t piece : {size_t{1}, size_t{2}, size_t{3}, size_t{7}, size_t{64}}) {
    const Listener heard = Decode(stream.bytes(), piece);
    EXPECT_THAT(heard.violations, IsEmpty());
    EXPECT_EQ(heard.headers.size(), 2u);
    ASSERT_EQ(heard.pages.size(), 1u);
    EXPECT_EQ(heard.feeds, std::vector<int32_t>{0x1B1B});
    EXPECT_EQ(Dot(heard.pages[0], 0x1B, 0x1A + 2), 4u);
    EXPECT_EQ(Dot(heard.pages[0], 0, 0x1B), 3u);
  }
}

TEST(StreamDecoder, PagesAreToldAsSoonAsTheyEnd) {
  StreamBuilder stream('G');
  stream.Header().DocumentStart().PageStart().Feed().PageEnd();
  Listener listener;
  StreamDecoder decoder(listener);
  decoder.Append(stream.bytes());
  while (decoder.Step()) continue;
  EXPECT_EQ(listener.pages.size(), 1u) << "without waiting for what follows";
  EXPECT_THAT(listener.violations, IsEmpty());
}

TEST(StreamDecoder, SeveralPagesAndAnAbortedOne) {
  StreamBuilder stream('G');
  stream.Header().Header().DocumentStart().PageStart().Feed().PageEnd();
  stream.Header().PageStart({.number = 2}).Feed().Pass(0).Row(0, 'Y', 1, "1").PageAbort();
  stream.DocumentEnd().WholePage();
  const Listener heard = Decode(stream.bytes());
  EXPECT_THAT(heard.violations, IsEmpty());
  ASSERT_EQ(heard.pages.size(), 3u);
  EXPECT_FALSE(heard.pages[0].spoilt);
  EXPECT_TRUE(heard.pages[1].spoilt);
  EXPECT_FALSE(heard.pages[2].spoilt);
}

TEST(StreamDecoder, PassesInterleaveColumns) {
  StreamBuilder stream('G');
  stream.Header().DocumentStart().PageStart({.passes = 4, .direction = 0}).Feed();
  stream.Pass(0).Row(7, 'C', 2, "10203").Pass(0, true).Row(7, 'C', 3, "11");
  stream.PageEnd().DocumentEnd();
  const Listener heard = Decode(stream.bytes());
  EXPECT_THAT(heard.violations, IsEmpty());
  ASSERT_EQ(heard.pages.size(), 1u);
  const PrintedPage& page = heard.pages[0];
  EXPECT_EQ(Dot(page, 2, 7), 1u);
  EXPECT_EQ(Dot(page, 6, 7), 0u);
  EXPECT_EQ(Dot(page, 10, 7), 2u);
  EXPECT_EQ(Dot(page, 18, 7), 3u);
  EXPECT_EQ(Dot(page, 3, 7), 1u);
  EXPECT_EQ(Dot(page, 7, 7), 1u);
}

// Row column 10 in a reverse pass, with the engine told 5 and with -5 (0xFB).
TEST(StreamDecoder, ReversePassesLagBehind) {
  const auto column_of_drop = [](uint8_t item6, std::optional<int> lag) {
    StreamBuilder stream('H');
    stream.Header().DocumentStart().PageStart({.direction = 1, .item6 = item6}).Feed();
    stream.Pass(0, true).Row(0, 'C', 10, "3").PageEnd().DocumentEnd();
    const Listener heard = Decode(stream.bytes(), 1 << 16, lag);
    EXPECT_THAT(heard.violations, IsEmpty());
    const auto& dots = heard.pages.at(0).canvas.dots;
    return std::find(dots.begin(), dots.end(), 3) - dots.begin();
  };
  EXPECT_EQ(column_of_drop(5, std::nullopt), 15);
  EXPECT_EQ(column_of_drop(0xFB, std::nullopt), 5);
  EXPECT_EQ(column_of_drop(5, 2), 12) << "the printer's own value counts";
  EXPECT_EQ(column_of_drop(5, -10), 0);
}

TEST(StreamDecoder, NegativeFeed) {
  StreamBuilder stream('G');
  stream.Header().DocumentStart().PageStart().Feed(0xFFFFFFFE).PageEnd().DocumentEnd();
  const Listener heard = Decode(stream.bytes());
  EXPECT_THAT(heard.violations, IsEmpty());
  EXPECT_EQ(heard.feeds, std::vector<int32_t>{-2});
}

TEST(StreamDecoder, FullRowsOfEitherFamilyAtTheirLongest) {
  for (const char family : {'G', 'H'}) {
    StreamBuilder stream(family);
    stream.Header().DocumentStart();
    stream.PageStart({.left_margin = 0, .width = 5100, .height = 2}).Feed().Pass(0);
    stream.Row(0, 'C', 0, std::string(5100, '3')).PageEnd().DocumentEnd();
    const Listener heard = Decode(stream.bytes());
    EXPECT_THAT(heard.violations, IsEmpty());
    ASSERT_EQ(heard.pages.size(), 1u);
    EXPECT_EQ(heard.pages[0].canvas.drops[0], (DropCounts{0, 0, 5100}));
  }
}

// --- Hostile streams: no crash, no endless loop, nothing laid beyond the page (the sanitizers'
// builds watch), and every stream is told to its end.
TEST(HostileStream, RandomBytesAndItems) {
  for (unsigned seed = 0; seed < 300; ++seed) {
    std::mt19937 random(seed);
    Bytes bytes;
    while (bytes.size() < 4000) {
      const unsigned choice = random() % 8;
      if (choice == 0) bytes += {0x1B, '*'};
      if (choice == 1) bytes += {0x1B, '*', 4, 'r'};
      if (choice == 2) bytes += HeaderBytes();
      for (unsigned i = 0; i < choice; ++i) bytes.push_back(static_cast<uint8_t>(random()));
    }
    const Listener heard = Decode(bytes, 1 + random() % 600);
    EXPECT_FALSE(heard.violations.empty()) << seed;
    for (const Told& told : heard.violations) EXPECT_LE(told.first, bytes.size());
  }
}

TEST(HostileStream, RightStreamsWithAFewWrongBytes) {
  for (unsigned seed = 0; seed < 2000; ++seed) {
    std::mt19937 random(seed);
    StreamBuilder stream(seed % 2 == 0 ? 'G' : 'H');
    stream.WholePage().Header().DocumentStart();
    stream.PageStart({.passes = 2, .direction = 0, .item6 = 3}).Feed();
    stream.Pass(0).Row(0, 'Y', 1, "1012").Pass(4, true).Row(2, 'Y', 2, "3003").PageAbort();
    stream.DocumentEnd();
    Bytes bytes = stream.bytes();
    for (unsigned i = 0; i <= seed % 3; ++i) {
      bytes[random() % bytes.size()] = static_cast<uint8_t>(random());
    }
    Listener whole = Decode(bytes);
    const Listener pieces = Decode(bytes, 1 + random() % 40);
    EXPECT_EQ(whole.violations, pieces.violations) << seed;
    EXPECT_EQ(whole.pages.size(), pieces.pages.size()) << seed;
  }
}

}  // namespace
}  // namespace zr7700::printer
