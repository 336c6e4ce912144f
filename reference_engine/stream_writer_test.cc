// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/stream_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string_view>

namespace zr7700::reference_engine {
namespace {

using ::testing::ElementsAre;
using Bytes = std::vector<uint8_t>;

class StreamWriterTest : public ::testing::Test {
 protected:
  StreamWriterTest() { writer_.Open(Take, &blocks_); }
  static void Take(void* context, uint8_t* data, uint32_t length_bytes) {
    static_cast<std::vector<Bytes>*>(context)->emplace_back(data, data + length_bytes);
  }
  StreamWriter writer_;
  std::vector<Bytes> blocks_;
};

TEST(Crc32Test, HasTheKnownCheckValue) {
  constexpr std::string_view kText = "123456789";
  const Bytes bytes(kText.begin(), kText.end());
  EXPECT_EQ(UpdateCrc32(0, bytes), 0xCBF43926U);
  EXPECT_EQ(UpdateCrc32(0, {}), 0U);
}

TEST(Crc32Test, GoesOnAcrossPieces) {
  Bytes bytes;
  for (int i = 0; i < 100; ++i) bytes.push_back(static_cast<uint8_t>(i * 7));
  const uint32_t whole = UpdateCrc32(0, bytes);
  for (size_t cut = 0; cut <= bytes.size(); ++cut) {
    const auto pieces = std::span<const uint8_t>(bytes);
    EXPECT_EQ(UpdateCrc32(UpdateCrc32(0, pieces.first(cut)), pieces.subspan(cut)), whole);
  }
}

TEST_F(StreamWriterTest, WritesNamesAndEscapedPayloads) {
  writer_.Send(Command::kDocumentEnd, Payload().U16(0x1B1A).U8(7));
  EXPECT_TRUE(blocks_.empty());
  writer_.Flush();
  ASSERT_EQ(blocks_.size(), 1U);
  EXPECT_THAT(blocks_[0], ElementsAre(0x1B, 0x2A, 0x01, 0x65, 0x1A, 1, 0x1A, 0, 7));
  writer_.Flush();
  EXPECT_EQ(blocks_.size(), 1U);
}

TEST_F(StreamWriterTest, FeedsTravelAloneAndUnescaped) {
  writer_.Send(Command::kDocumentEnd, Payload().U32(0));
  writer_.Send(Command::kFeed, Payload().U32(0x1B2A0766));
  writer_.Send(Command::kDocumentEnd, Payload().U32(0));
  writer_.Flush();
  ASSERT_EQ(blocks_.size(), 3U);
  EXPECT_THAT(blocks_[1], ElementsAre(0x1B, 0x2A, 0x07, 0x66, 0x1B, 0x2A, 0x07, 0x66));
}

TEST_F(StreamWriterTest, TheChecksumLeavesFeedsOut) {
  writer_.Send(Command::kPageStart, Payload().U8(1));
  writer_.RestartCrc();
  writer_.Send(Command::kPassStart, Payload().U8(2));
  writer_.Send(Command::kFeed, Payload().U32(99));
  writer_.Send(Command::kPassStart, Payload().U8(3));
  const Bytes summed = {0x1B, 0x2A, 0x03, 0x62, 2, 0x1B, 0x2A, 0x03, 0x62, 3};
  EXPECT_EQ(writer_.Crc(), UpdateCrc32(0, summed));
  writer_.Flush();
  EXPECT_EQ(writer_.Crc(), UpdateCrc32(0, summed));
}

TEST_F(StreamWriterTest, LongOutputComesInBlocksOfWholeCommands) {
  const Bytes data(1000, 5);
  for (int i = 0; i < 200; ++i) writer_.SendRow(Payload().U8(1), data);
  writer_.Flush();
  EXPECT_GT(blocks_.size(), 2U);
  for (const Bytes& block : blocks_) EXPECT_EQ(block.size() % 1005, 0U);
}

}  // namespace
}  // namespace zr7700::reference_engine
