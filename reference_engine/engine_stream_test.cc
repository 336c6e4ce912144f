// The built libraries through their public interface: the stream and what the properties do to it.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <tuple>

#include "reference_engine/test_engine_host.h"

namespace zr7700::reference_engine::testing {
namespace {

using Drops = std::array<std::vector<uint8_t>, 3>;

class EngineStreamTest : public ::testing::TestWithParam<FamilyName> {
 protected:
  Job StandardJob() const {
    Job job;
    job.table = StandardTable(GetParam());
    return job;
  }
  PrintedPage Print(const Job& job, const Picture& picture) const {
    return PrintAndRead(GetParam(), job, picture);
  }
};

INSTANTIATE_TEST_SUITE_P(Families, EngineStreamTest, ::testing::Values(kHeronName, kGraniteName));

uint32_t TotalDrops(const PrintedPage& page) {
  return page.DropCount(0) + page.DropCount(1) + page.DropCount(2);
}

TEST_P(EngineStreamTest, WhiteGivesNoDropAtAll) {
  for (const int color : {1, 2}) {
    Job job = StandardJob();
    job.sharpening = 12;
    job.ini = IniText(color, 4, 0);
    const PrintedPage page = Print(job, Picture(300, 300));
    EXPECT_EQ(TotalDrops(page), 0U);
    EXPECT_TRUE(page.sweeps.empty());
  }
}

TEST_P(EngineStreamTest, WhiteAroundAPictureStaysBare) {
  Picture picture(300, 300);
  picture.Fill(100, 120, 50, 60, {40, 90, 200});
  Job job = StandardJob();
  job.sharpening = 12;
  const PrintedPage page = Print(job, picture);
  for (size_t plane = 0; plane < 3; ++plane)
    for (uint32_t y = 0; y < 300; ++y)
      for (uint32_t x = 0; x < 300; ++x)
        if (x < 100 || x >= 150 || y < 120 || y >= 180) {
          ASSERT_EQ(page.drop(plane, x, y), 0) << plane << " " << x << " " << y;
        }
}

TEST_P(EngineStreamTest, TellsThePrinterTheProperties) {
  Job job = StandardJob();
  job.quality = 4;
  job.sharpening = 7;
  job.alignment6 = 250;
  job.ini = IniText(2, 2, 2);
  const PrintedPage page = Print(job, Picture(2834, 10));
  EXPECT_EQ(page.start.resolution_dpi, 600U);
  EXPECT_EQ(page.start.vertical_resolution_dpi, 600U);
  EXPECT_EQ(page.start.left_margin_dots, 1916);
  EXPECT_EQ(page.start.width_dots, 2834U);
  EXPECT_EQ(page.start.height_lines, 10U);
  EXPECT_EQ(page.start.reach_dots, 5100U);
  EXPECT_EQ(page.start.quality, 4U);
  EXPECT_EQ(page.start.media, 1U);
  EXPECT_EQ(page.start.passes, 2U);
  EXPECT_EQ(page.start.direction, 2U);
  EXPECT_EQ(page.start.mixing, 2U);
  EXPECT_EQ(page.start.sharpening, 7U);
  EXPECT_EQ(page.start.alignment, (std::array<uint8_t, 8>{112, 112, 112, 112, 250, 0, 40, 40}));
  // Twice the top margin of 69 and what the filter takes away again.
  EXPECT_EQ(page.feed, 138 + 1900);
}

TEST_P(EngineStreamTest, QualityChoosesThePassesUnlessTheIniFileDoes) {
  const std::pair<uint32_t, uint32_t> kPasses[] = {{2, 2}, {3, 4}, {4, 8}};
  for (const auto& [quality, passes] : kPasses) {
    Job job = StandardJob();
    job.quality = quality;
    EXPECT_EQ(Print(job, Picture(10, 10)).start.passes, passes);
    job.ini = IniText(1, 1, 0);
    EXPECT_EQ(Print(job, Picture(10, 10)).start.passes, 1U);
  }
}

TEST_P(EngineStreamTest, DraftPagesKeepTheSeat) {
  Job job = StandardJob();
  job.dots_per_inch = 300;
  job.left_margin = 958;
  job.physical_width = 2550;
  Picture picture(1417, 4);
  picture.Fill(0, 0, 1417, 4, {0, 0, 0});
  const PrintedPage page = Print(job, picture);
  EXPECT_EQ(page.start.resolution_dpi, 300U);
  EXPECT_EQ(page.start.left_margin_dots, 958);
  // The top margin counts 1/600 inch here as well.
  EXPECT_EQ(page.feed, 138 + 1900);
  EXPECT_EQ(page.drop(2, 0, 0), 3);
  EXPECT_EQ(page.drop(2, 1416, 3), 3);
}

TEST_P(EngineStreamTest, FourCornersLandWhereTheyBelong) {
  Picture picture(400, 500);
  picture.Fill(0, 0, 40, 50, {0, 255, 255});
  picture.Fill(360, 0, 40, 50, {255, 0, 255});
  picture.Fill(0, 450, 40, 50, {255, 255, 0});
  picture.Fill(360, 450, 40, 50, {0, 0, 0});
  const PrintedPage page = Print(StandardJob(), picture);
  // Ink by ink: cyan upper left, magenta upper right, yellow lower left, all three lower right.
  const auto large = [&](uint32_t x, uint32_t y) {
    return std::array<bool, 3>{page.drop(0, x, y) == 3, page.drop(1, x, y) == 3,
                               page.drop(2, x, y) == 3};
  };
  EXPECT_EQ(large(0, 0), (std::array<bool, 3>{true, false, false}));
  EXPECT_EQ(large(399, 0), (std::array<bool, 3>{false, true, false}));
  EXPECT_EQ(large(0, 499), (std::array<bool, 3>{false, false, true}));
  EXPECT_EQ(large(399, 499), (std::array<bool, 3>{true, true, true}));
  EXPECT_EQ(large(200, 250), (std::array<bool, 3>{false, false, false}));
}

TEST_P(EngineStreamTest, EdgesSitOnTheDot) {
  Picture picture(256, 256);
  picture.Fill(64, 80, 100, 90, {0, 0, 0});
  Job job = StandardJob();
  job.sharpening = 12;
  const PrintedPage page = Print(job, picture);
  for (uint32_t y = 0; y < 256; ++y)
    for (uint32_t x = 0; x < 256; ++x) {
      const bool inside = x >= 64 && x < 164 && y >= 80 && y < 170;
      for (size_t plane = 0; plane < 3; ++plane)
        ASSERT_EQ(page.drop(plane, x, y), inside ? 3 : 0) << x << " " << y;
    }
}

TEST_P(EngineStreamTest, PassesAndDirectionsLayTheSameDrops) {
  const Picture picture = NoisePicture(333, 450);
  Job job = StandardJob();
  job.ini = IniText(1, 1, 0);
  const Drops expected = Print(job, picture).drops;
  for (const int passes : {1, 2, 4, 8})
    for (const int direction : {0, 1, 2})
      for (const uint32_t lag : {0U, 5U, 253U}) {
        job.ini = IniText(1, passes, direction);
        job.alignment6 = lag;
        const PrintedPage page = Print(job, picture);
        EXPECT_EQ(page.drops, expected) << passes << " " << direction << " " << lag;
        // Three bands of 192 lines: Granite meets them one after the other, Heron twice each.
        const auto sweeps = static_cast<uint32_t>(page.sweeps.size());
        const auto count = static_cast<uint32_t>(passes);
        EXPECT_GE(sweeps, GetParam().letter == 'H' ? 6 * count : 450 * count / 192 + count - 1);
      }
}

TEST_P(EngineStreamTest, EveryWidthAndPassCountIsComplete) {
  for (uint32_t width = 1; width <= 67; ++width)
    for (const int passes : {1, 2, 4, 8}) {
      Picture picture(width, 9);
      picture.Fill(0, 0, width, 9, {0, 0, 0});
      Job job = StandardJob();
      job.ini = IniText(2, passes, 0);
      const PrintedPage page = Print(job, picture);
      for (size_t plane = 0; plane < 3; ++plane)
        EXPECT_EQ(page.drops[plane], std::vector<uint8_t>(size_t{width} * 9, 3));
    }
}

bool HasFeedAt(const std::vector<uint8_t>& block, size_t i) {
  return block[i] == 0x1B && block[i + 1] == 0x2A && block[i + 2] == 0x07 && block[i + 3] == 0x66;
}

TEST_P(EngineStreamTest, BlocksHoldWholeCommandsAndOneFeed) {
  EngineHost host(GetParam());
  Job job = StandardJob();
  job.ini = IniText(1, 4, 0);
  ASSERT_EQ(host.Print(job, NoisePicture(2000, 600)), 0);
  EXPECT_GT(host.blocks().size(), 8U);
  int feeds = 0;
  for (const auto& block : host.blocks()) {
    ASSERT_GE(block.size(), 4U);
    EXPECT_EQ(block[0], 0x1B);
    for (size_t i = 0; i + 4 <= block.size(); ++i)
      if (HasFeedAt(block, i)) {
        ++feeds;
        EXPECT_EQ(i, 0U);
        EXPECT_EQ(block.size(), 8U);
      }
  }
  EXPECT_EQ(feeds, 1);
}

TEST_P(EngineStreamTest, TheFilterMayChangeTheFeedInPlace) {
  EngineHost plain(GetParam());
  ASSERT_EQ(plain.Print(StandardJob(), NoisePicture(64, 64)), 0);
  std::vector<uint8_t> stream = plain.Stream();
  const std::array<uint8_t, 4> name = {0x1B, 0x2A, 0x07, 0x66};
  const auto feed = std::ranges::search(stream, name).begin();
  ASSERT_NE(feed, stream.end());
  // 2038 - 1900 = 138 = 0x8A.
  std::ranges::copy(std::array<uint8_t, 4>{0, 0, 0, 0x8A}, feed + 4);
  TestPrinter printer;
  EXPECT_TRUE(printer.Print(stream)) << printer.error();
  EXPECT_EQ(printer.documents()[0].pages[0].feed, 138);
}

TEST_P(EngineStreamTest, ShortLinesEndAtTheRightEdge) {
  EngineHost host(GetParam());
  ASSERT_EQ(host.Initialize() | host.StartDocument(StandardTable(GetParam())), 0);
  ASSERT_EQ(host.SetProperties({}, 1200, 4), 0);
  ASSERT_EQ(host.entries().HPEStartPage(host.handle()), 0);
  Picture picture(1000, 4);
  picture.Fill(0, 0, 1000, 4, {0, 0, 0});
  ASSERT_EQ(host.SendLines(picture), 0);
  ASSERT_EQ(
      host.entries().HPEEndPage(host.handle(), 0) | host.entries().HPEEndDoc(host.handle(), 0), 0);
  TestPrinter printer;
  const std::vector<uint8_t> stream = host.Stream();
  ASSERT_TRUE(printer.Print(stream)) << printer.error();
  const PrintedPage& page = printer.documents()[0].pages[0];
  EXPECT_EQ(page.drop(0, 199, 1), 0);
  EXPECT_EQ(page.drop(0, 200, 1), 3);
  EXPECT_EQ(page.drop(0, 1199, 1), 3);
}

TEST_P(EngineStreamTest, DotsBeyondTheCarriagesReachAreLeftOut) {
  Picture picture(100, 8);
  picture.Fill(0, 0, 100, 8, {0, 0, 0});
  Job job = StandardJob();
  job.left_margin = -30;
  PrintedPage page = Print(job, picture);
  EXPECT_EQ(page.drop(1, 29, 3), 0);
  EXPECT_EQ(page.drop(1, 30, 3), 3);
  EXPECT_EQ(page.DropCount(1), 70U * 8);
  job.left_margin = 5040;
  page = Print(job, picture);
  EXPECT_EQ(page.drop(1, 59, 3), 3);
  EXPECT_EQ(page.drop(1, 60, 3), 0);
}

// Prints `picture` through bands of `lines` lines.
Drops PrintInBands(const FamilyName& family, const Picture& picture, uint32_t lines) {
  EngineHost host(family);
  EXPECT_EQ(host.Initialize() | host.StartDocument(StandardTable(family)), 0);
  EXPECT_EQ(host.SetProperties({}, static_cast<int32_t>(picture.width),
                               static_cast<int32_t>(picture.height)),
            0);
  const EntryTable& calls = host.entries();
  EXPECT_EQ(calls.HPEStartPage(host.handle()), 0);
  for (uint32_t y = 0; y < picture.height; y += lines)
    EXPECT_EQ(calls.HPESendBand(host.handle(), 0, y, std::min(lines, picture.height - y),
                                picture.width, picture.width * 4, picture.pixel(0, y)),
              0);
  EXPECT_EQ(calls.HPEEndPage(host.handle(), 0) | calls.HPEEndDoc(host.handle(), 0), 0);
  TestPrinter printer;
  const std::vector<uint8_t> stream = host.Stream();
  EXPECT_TRUE(printer.Print(stream)) << printer.error();
  return printer.documents().at(0).pages.at(0).drops;
}

TEST_P(EngineStreamTest, BandsOfAnyHeightGiveTheSamePage) {
  const Picture picture = NoisePicture(120, 50);
  const Drops expected = PrintInBands(GetParam(), picture, 1);
  EXPECT_EQ(PrintInBands(GetParam(), picture, 7), expected);
  EXPECT_EQ(PrintInBands(GetParam(), picture, 50), expected);
}

TEST_P(EngineStreamTest, LinesLeftOutAreWhite) {
  Picture picture(64, 400);
  picture.Fill(0, 0, 64, 1, {0, 80, 0});
  picture.Fill(0, 399, 64, 1, {0, 80, 0});
  EngineHost host(GetParam());
  const EntryTable& calls = host.entries();
  ASSERT_EQ(host.Initialize() | host.StartDocument(StandardTable(GetParam())), 0);
  ASSERT_EQ(host.SetProperties({}, 64, 400) | calls.HPEStartPage(host.handle()), 0);
  for (const uint32_t y : {0U, 399U})
    ASSERT_EQ(calls.HPESendBand(host.handle(), 0, y, 1, 64, 256, picture.pixel(0, y)), 0);
  ASSERT_EQ(calls.HPEEndPage(host.handle(), 0) | calls.HPEEndDoc(host.handle(), 0), 0);
  TestPrinter printer;
  const std::vector<uint8_t> stream = host.Stream();
  ASSERT_TRUE(printer.Print(stream)) << printer.error();
  EXPECT_EQ(printer.documents()[0].pages[0].drops, Print(StandardJob(), picture).drops);
}

TEST_P(EngineStreamTest, TheIniFileIsReadAtEveryPage) {
  EngineHost host(GetParam());
  const EntryTable& calls = host.entries();
  ASSERT_EQ(host.Initialize() | host.StartDocument(StandardTable(GetParam())), 0);
  ASSERT_EQ(host.SetProperties({}, 20, 20), 0);
  for (const int passes : {8, 2}) {
    host.WriteIni(IniText(1, passes, 0));
    ASSERT_EQ(calls.HPEStartPage(host.handle()) | calls.HPEEndPage(host.handle(), 0), 0);
  }
  ASSERT_EQ(calls.HPEEndDoc(host.handle(), 0), 0);
  TestPrinter printer;
  const std::vector<uint8_t> stream = host.Stream();
  ASSERT_TRUE(printer.Print(stream)) << printer.error();
  ASSERT_EQ(printer.documents()[0].pages.size(), 2U);
  EXPECT_EQ(printer.documents()[0].pages[0].start.passes, 8U);
  EXPECT_EQ(printer.documents()[0].pages[1].start.passes, 2U);
  EXPECT_EQ(printer.documents()[0].pages_ended, 2U);
}

TEST_P(EngineStreamTest, InstancesDoNotDisturbEachOther) {
  const Picture picture = NoisePicture(90, 300);
  EngineHost alone(GetParam());
  ASSERT_EQ(alone.Print(StandardJob(), picture), 0);
  EngineHost a(GetParam());
  EngineHost b(GetParam().letter == 'H' ? kGraniteName : kHeronName);
  EngineHost c(GetParam());
  for (EngineHost* host : {&a, &b, &c}) {
    ASSERT_EQ(host->Initialize() | host->StartDocument(StandardTable(host->family())), 0);
    ASSERT_EQ(host->SetProperties({}, 90, 300), 0);
    ASSERT_EQ(host->entries().HPEStartPage(host->handle()), 0);
  }
  for (uint32_t y = 0; y < 300; ++y)
    for (EngineHost* host : {&a, &b, &c})
      ASSERT_EQ(host->entries().HPESendBand(host->handle(), 0, y, 1, 90, 360, picture.pixel(0, y)),
                0);
  for (EngineHost* host : {&a, &b, &c})
    ASSERT_EQ(host->entries().HPEEndPage(host->handle(), 0) |
                  host->entries().HPEEndDoc(host->handle(), 0),
              0);
  EXPECT_EQ(a.Stream(), alone.Stream());
  EXPECT_EQ(c.Stream(), alone.Stream());
  EXPECT_NE(b.Stream(), alone.Stream());
}

TEST_P(EngineStreamTest, SharpeningDeepensEdgesInProportion) {
  Picture picture(200, 200);
  picture.Fill(0, 0, 200, 200, {170, 170, 170});
  picture.Fill(100, 0, 100, 200, {100, 100, 100});
  // The cyan ink in the dark column at the edge rises with the level.
  const auto ink_at_edge = [&](int32_t level) {
    Job job = StandardJob();
    job.sharpening = level;
    const PrintedPage page = Print(job, picture);
    uint32_t ink = 0;
    for (uint32_t y = 0; y < 200; ++y) ink += page.drop(0, 100, y);
    return ink;
  };
  EXPECT_LT(ink_at_edge(1), ink_at_edge(6));
  EXPECT_LT(ink_at_edge(6), ink_at_edge(12));
}

TEST_P(EngineStreamTest, AlignmentShiftsWhatReversePassesAreTold) {
  Picture picture(20, 4);
  picture.Fill(5, 0, 10, 4, {0, 0, 0});
  Job job = StandardJob();
  job.ini = IniText(1, 1, 1);
  job.alignment6 = 3;
  EngineHost host(GetParam());
  ASSERT_EQ(host.Print(job, picture), 0);
  const std::vector<uint8_t> stream = host.Stream();
  const std::array<uint8_t, 4> name = {0x1B, 0x2A, 0x04, 0x72};
  const auto row = std::ranges::search(stream, name).begin();
  ASSERT_NE(row, stream.end());
  // First column 5 less a lag of 3, 10 cells.
  EXPECT_EQ(std::vector<uint8_t>(row + 7, row + 11), (std::vector<uint8_t>{0, 2, 0, 10}));
}

TEST(EngineFamiliesTest, PrintTheSamePictureByDifferentStreams) {
  Picture picture(200, 300);
  picture.Fill(20, 30, 100, 200, {0, 0, 255});
  Job heron_job;
  heron_job.table = StandardTable(kHeronName);
  Job granite_job;
  granite_job.table = StandardTable(kGraniteName);
  const PrintedPage heron = PrintAndRead(kHeronName, heron_job, picture);
  const PrintedPage granite = PrintAndRead(kGraniteName, granite_job, picture);
  EXPECT_EQ(heron.DropCount(0), granite.DropCount(0));
  EXPECT_NE(heron.sweeps.size(), granite.sweeps.size());
}

TEST(EngineFamiliesTest, MediaChangesTheAmountOfInk) {
  Picture picture(256, 256);
  picture.Fill(0, 0, 256, 256, {230, 230, 230});
  Job job;
  job.table = StandardTable(kGraniteName);
  const uint32_t high_gloss = TotalDrops(PrintAndRead(kGraniteName, job, picture));
  job.media = 2;
  const uint32_t high_gloss_2 = TotalDrops(PrintAndRead(kGraniteName, job, picture));
  job.media = 8;
  const uint32_t semi_gloss = TotalDrops(PrintAndRead(kGraniteName, job, picture));
  // The less a drop spreads, the more of them it takes.
  EXPECT_LT(high_gloss, high_gloss_2);
  EXPECT_LT(high_gloss_2, semi_gloss);
}

}  // namespace
}  // namespace zr7700::reference_engine::testing
