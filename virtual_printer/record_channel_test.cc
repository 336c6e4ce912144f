// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/record_channel.h"

#include <gtest/gtest.h>

namespace zr7700::printer {
namespace {

using Bytes = std::vector<uint8_t>;

// A channel of 20 records a second that keeps the pieces which it sends.
class RecordChannelTest : public testing::Test {
 protected:
  void Order(std::string_view text, double now_s) {
    std::string error;
    const auto command = ParseCommand(text, error);
    ASSERT_TRUE(command.has_value()) << error;
    ASSERT_TRUE(channel_.Obey(*command, now_s));
  }

  // Lets the time from the last call to `until_s` pass, looking every 5 ms.
  void RunUntil(double until_s) {
    for (; now_ms_ < until_s * 1000; now_ms_ += 5) channel_.Tick(now_ms_ / 1000, status_);
  }

  PrinterStatus status_;
  const StatusRecord record_ = BuildStatusRecord(status_);
  const Bytes whole_{record_.begin(), record_.end()};
  std::vector<Bytes> pieces_;
  double now_ms_ = 0;
  RecordChannel channel_{0.05, [this](std::span<const uint8_t> piece) {
                           pieces_.emplace_back(piece.begin(), piece.end());
                         }};
};

TEST_F(RecordChannelTest, SendsTwentyWholeRecordsASecond) {
  RunUntil(1);
  EXPECT_NEAR(static_cast<double>(pieces_.size()), 20, 1);
  for (const Bytes& piece : pieces_) EXPECT_EQ(piece, whole_);
}

TEST_F(RecordChannelTest, ALateSenderSendsNoBurst) {
  channel_.Tick(0, status_);
  channel_.Tick(10, status_);
  EXPECT_EQ(pieces_.size(), 2u);
  channel_.Tick(10, status_);
  channel_.Tick(10.01, status_);
  EXPECT_LE(pieces_.size(), 3u);
}

TEST_F(RecordChannelTest, SilenceEnds) {
  RunUntil(0.5);
  Order("silence 3s", 0.5);
  const size_t before = pieces_.size();
  RunUntil(3.49);
  EXPECT_EQ(pieces_.size(), before);
  RunUntil(3.6);
  EXPECT_GT(pieces_.size(), before);
}

TEST_F(RecordChannelTest, SplitRecordsComeInTwoPieces) {
  Order("split 100", 0);
  channel_.Tick(0, status_);
  ASSERT_EQ(pieces_.size(), 1u);
  EXPECT_EQ(pieces_[0], Bytes(whole_.begin(), whole_.begin() + 100));
  EXPECT_EQ(channel_.NextTick(), 0.025);
  channel_.Tick(0.024, status_);
  EXPECT_EQ(pieces_.size(), 1u);
  channel_.Tick(0.025, status_);
  ASSERT_EQ(pieces_.size(), 2u);
  EXPECT_EQ(pieces_[1], Bytes(whole_.begin() + 100, whole_.end()));
  Order("split 0", 0.03);
  channel_.Tick(0.05, status_);
  EXPECT_EQ(pieces_[2], whole_);
}

TEST_F(RecordChannelTest, ALateTailStillComesBeforeTheNextRecord) {
  Order("split 1", 0);
  channel_.Tick(0, status_);
  channel_.Tick(5, status_);
  ASSERT_EQ(pieces_.size(), 3u);
  EXPECT_EQ(pieces_[1].size(), 143u);
  EXPECT_EQ(pieces_[2].size(), 1u);
}

TEST_F(RecordChannelTest, MisalignSendsATailOnce) {
  Order("misalign 37", 0);
  channel_.Tick(0, status_);
  channel_.Tick(0.05, status_);
  ASSERT_EQ(pieces_.size(), 3u);
  EXPECT_EQ(pieces_[0], Bytes(whole_.end() - 37, whole_.end()));
  EXPECT_EQ(pieces_[1], whole_);
  EXPECT_EQ(pieces_[2], whole_);
}

TEST_F(RecordChannelTest, NoiseComesOnce) {
  Order("noise 500", 0);
  channel_.Tick(0, status_);
  channel_.Tick(0.05, status_);
  ASSERT_EQ(pieces_.size(), 3u);
  EXPECT_EQ(pieces_[0].size(), 500u);
  EXPECT_NE(pieces_[0], Bytes(500, pieces_[0][0])) << "noise is not all one byte";
  EXPECT_EQ(pieces_[1], whole_);
}

TEST_F(RecordChannelTest, BadSumsAreCounted) {
  Order("badsum 2", 0);
  for (int i = 0; i < 4; ++i) channel_.Tick(0.05 * i, status_);
  ASSERT_EQ(pieces_.size(), 4u);
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(pieces_[i][142] == whole_[142], i >= 2) << i;
    EXPECT_TRUE(std::equal(pieces_[i].begin(), pieces_[i].begin() + 142, whole_.begin()));
  }
}

TEST_F(RecordChannelTest, OrdersToTheMachineAreLeftAlone) {
  std::string error;
  EXPECT_FALSE(channel_.Obey(*ParseCommand("bin 0", error), 0));
}

}  // namespace
}  // namespace zr7700::printer
