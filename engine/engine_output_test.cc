// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/engine_output.h"

#include "engine/job_variables.h"
#include "tests/support/job_test.h"
#include "tests/support/stream_capture.h"

namespace zr7700 {
namespace {

using testing::IsEmpty;

class EngineOutputTest : public test::JobTest {
 protected:
  EngineOutputTest() { variables_.FeedAdjust = -1900; }

  // What goes out for a block handed over with this context.
  std::string Written(void* context, std::string block) {
    test::StdoutCapture output;
    WriteEngineOutput(context, reinterpret_cast<uint8_t*>(block.data()),
                      static_cast<uint32_t>(block.size()));
    return output.Take();
  }

  JobVariables variables_ = {};
  const std::string feed_ = std::string(
      "\x1B*\x07"
      "f\0\0\x27\x10",
      8);
};

TEST_F(EngineOutputTest, EveryByteGoesToStandardOutput) {
  const std::string block("a\0b\r\n\xFF", 6);
  EXPECT_EQ(Written(&variables_, block), block);
  EXPECT_EQ(Written(nullptr, block), block);
}

TEST_F(EngineOutputTest, FeedCommandIsAdjustedOnItsWay) {
  EXPECT_EQ(Written(&variables_, "x" + feed_ + "y"), std::string("x\x1B*\x07"
                                                                 "f\0\0\x1F\xA4y",
                                                                 10));
}

TEST_F(EngineOutputTest, EnginesOwnBufferIsChanged) {
  std::string block = feed_;
  test::StdoutCapture output;
  WriteEngineOutput(&variables_, reinterpret_cast<uint8_t*>(block.data()), 8);
  EXPECT_EQ(block, std::string("\x1B*\x07"
                               "f\0\0\x1F\xA4",
                               8));
}

TEST_F(EngineOutputTest, EveryBlocksFirstFeedIsAdjusted) {
  EXPECT_EQ(Written(&variables_, feed_), Written(&variables_, feed_));
}

TEST_F(EngineOutputTest, WithoutAContextAFeedCommandGoesOutUnchanged) {
  EXPECT_EQ(Written(nullptr, feed_), feed_);
  EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(EngineOutputTest, BlocksTooShortForAFeedCommandGoOut) {
  for (size_t length = 0; length < 4; ++length) {
    EXPECT_EQ(Written(&variables_, feed_.substr(0, length)), feed_.substr(0, length));
  }
}

TEST_F(EngineOutputTest, NothingIsFlushed) {
  test::StdoutCapture output;
  uint8_t byte = 'x';
  WriteEngineOutput(nullptr, &byte, 1);
  EXPECT_EQ(output.Arrived(), "");
  EXPECT_EQ(output.Take(), "x");
}

int waits = 0;

TEST_F(EngineOutputTest, IsWaitedForOnlyWhereAWriteIsDue) {
  SetOutputWait([](int) { ++waits; });
  {
    const test::StdoutCapture output;
    FlushEngineOutput();  // nothing is buffered
    std::string block(4096, 'x');
    WriteEngineOutput(nullptr, reinterpret_cast<uint8_t*>(block.data()), 4096);
    EXPECT_EQ(waits, 0);
    WriteEngineOutput(nullptr, reinterpret_cast<uint8_t*>(block.data()), 1);
    EXPECT_EQ(waits, 1);
    FlushEngineOutput();
    EXPECT_EQ(waits, 2);
  }
  SetOutputWait(nullptr);
}

TEST_F(EngineOutputTest, NoDataIsNoOutput) {
  test::StdoutCapture output;
  WriteEngineOutput(&variables_, nullptr, 0);
  EXPECT_EQ(output.Take(), "");
}

}  // namespace
}  // namespace zr7700
