// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/sweep.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace zr7700::reference_engine {
namespace {

using ::testing::ElementsAre;
using Bytes = std::vector<uint8_t>;

// A pass as it went out: where the head was and which way it went, and its rows' nozzles and
// planes.
struct SentPass {
  int head_line;
  bool reverse;
  std::string rows;
};

class SweepTest : public ::testing::Test {
 protected:
  SweepTest() { writer_.Open(Take, &stream_); }
  static void Take(void* context, uint8_t* data, uint32_t length_bytes) {
    auto* const stream = static_cast<Bytes*>(context);
    stream->insert(stream->end(), data, data + length_bytes);
  }
  // Prints one cyan and one yellow dot in column 0 of each of `lines`, all in meeting `meeting`.
  void PrintDots(const SweepSettings& settings, const std::vector<uint32_t>& lines,
                 uint32_t meeting = 0) {
    Sweep sweep(settings, &writer_);
    for (const uint32_t line : lines) {
      sweep.ReachLine(line);
      for (const Plane plane : {kCyan, kYellow}) sweep.AddRow({line, meeting}, plane, 0, Bytes{1});
    }
    sweep.Finish();
  }
  // The stream has no escapes as long as the tests use no 0x1A and 0x1B.
  std::vector<SentPass> Passes() const {
    std::vector<SentPass> passes;
    for (size_t i = 0; i + 8 < stream_.size(); ++i) {
      if (stream_[i] != 0x1B) continue;
      const uint8_t* const payload = &stream_[i + 4];
      if (stream_[i + 2] == 0x03) {
        const int head = payload[4] << 24 | payload[5] << 16 | payload[6] << 8 | payload[7];
        passes.push_back({head, payload[8] == 1, ""});
      } else {
        passes.back().rows +=
            std::to_string(payload[0] * 256 + payload[1]) + static_cast<char>(payload[2]) + " ";
      }
    }
    return passes;
  }
  StreamWriter writer_;
  Bytes stream_;
};

TEST_F(SweepTest, GranitePrintsNeighbouringLinesPlaneByPlane) {
  PrintDots({Family::kGranite, 1, PrintDirection::kBoth, 0}, {0, 1, 191, 192});
  const std::vector<SentPass> passes = Passes();
  ASSERT_EQ(passes.size(), 2U);
  EXPECT_EQ(passes[0].head_line, 0);
  EXPECT_EQ(passes[0].rows, "0C 0Y 1C 1Y 191C 191Y ");
  EXPECT_EQ(passes[1].head_line, 192);
  EXPECT_EQ(passes[1].rows, "0C 0Y ");
}

TEST_F(SweepTest, GraniteMovesOnByAPartOfTheHead) {
  // Two passes: bands of 96 lines. Line 100 is met first by the head standing at 0 and then by the
  // head standing at 96.
  PrintDots({Family::kGranite, 2, PrintDirection::kBoth, 0}, {3, 100});
  std::vector<SentPass> passes = Passes();
  ASSERT_EQ(passes.size(), 2U);
  EXPECT_EQ(passes[0].head_line, -96);
  EXPECT_EQ(passes[0].rows, "99C 99Y ");
  EXPECT_EQ(passes[1].head_line, 0);
  EXPECT_EQ(passes[1].rows, "100C 100Y ");
  stream_.clear();
  PrintDots({Family::kGranite, 2, PrintDirection::kBoth, 0}, {100}, 1);
  passes = Passes();
  ASSERT_EQ(passes.size(), 1U);
  EXPECT_EQ(passes[0].head_line, 96);
  EXPECT_EQ(passes[0].rows, "4C 4Y ");
}

TEST_F(SweepTest, HeronInterlacesAndSortsByPlane) {
  PrintDots({Family::kHeron, 1, PrintDirection::kBoth, 0}, {0, 1, 2, 191, 192});
  const std::vector<SentPass> passes = Passes();
  ASSERT_EQ(passes.size(), 3U);
  EXPECT_EQ(passes[0].head_line, 0);
  EXPECT_EQ(passes[0].rows, "0Y 1Y 0C 1C ");
  EXPECT_EQ(passes[1].head_line, 1);
  EXPECT_EQ(passes[1].rows, "0Y 95Y 0C 95C ");
  EXPECT_EQ(passes[2].head_line, 192);
}

TEST_F(SweepTest, DirectionsAlternateAmongThePassesThatAreSent) {
  const auto reverse = [&](PrintDirection direction) {
    stream_.clear();
    // Lines far apart leave many passes out.
    PrintDots({Family::kHeron, 1, direction, 0}, {0, 2000, 4001, 9001});
    std::vector<bool> ways;
    for (const SentPass& pass : Passes()) ways.push_back(pass.reverse);
    return ways;
  };
  EXPECT_THAT(reverse(PrintDirection::kBoth), ElementsAre(false, true, false, true));
  EXPECT_THAT(reverse(PrintDirection::kForward), ElementsAre(false, false, false, false));
  EXPECT_THAT(reverse(PrintDirection::kReverse), ElementsAre(true, true, true, true));
}

TEST_F(SweepTest, CountsWhatWasSent) {
  Sweep sweep({Family::kGranite, 1, PrintDirection::kBoth, 0}, &writer_);
  sweep.ReachLine(0);
  sweep.AddRow({0, 0}, kMagenta, 10, Bytes{0, 1, 0, 3, 0});
  sweep.AddRow({0, 0}, kYellow, 10, Bytes{0, 0});
  EXPECT_EQ(sweep.counts().rows, 0U);
  sweep.Finish();
  EXPECT_EQ(sweep.counts().passes, 1U);
  EXPECT_EQ(sweep.counts().rows, 1U);
  EXPECT_THAT(sweep.counts().drops, ElementsAre(0, 2, 0));
}

TEST(PhaseTest, EveryLineMeetsEveryColumnOnce) {
  for (uint32_t line = 0; line < 16; ++line) {
    std::vector<bool> met(8, false);
    for (uint32_t meeting = 0; meeting < 8; ++meeting) met[PhaseOf({line, meeting}, 8)] = true;
    EXPECT_EQ(met, std::vector<bool>(8, true));
  }
}

}  // namespace
}  // namespace zr7700::reference_engine
