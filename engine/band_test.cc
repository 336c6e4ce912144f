// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/band.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

#include "engine/engine_entries.h"
#include "tests/support/job_test.h"
#include "tests/support/recorded_engine.h"

namespace zr7700 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BandTest : public test::JobTest {
 protected:
  BandTest() {
    engineHandle = engine_.handle();
    variables_.topOutputImage = 600;
    variables_.bottomOutputImage = 2234;
    variables_.ColorMatching = variables_.DiscSurfaceQuality = 1;
    variables_.InkSaturation = 100;
    for (size_t i = 0; i < line_.size(); ++i) line_[i] = static_cast<uint8_t>(i + 1);
  }

  test::RecordedEngine engine_;
  JobVariables variables_ = {};
  std::vector<uint8_t> line_ = std::vector<uint8_t>(70000 * 4);
};

TEST_F(BandTest, LineInsideTheBandGoesOutAsABandOfOneLine) {
  EXPECT_TRUE(SendLine(variables_, line_.data(), 2834, 601));
  EXPECT_THAT(engine_.calls(), ElementsAre("HPESendBand(engine, 0, 601, 1, 2834, 11336, data)"));
  EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(BandTest, EngineSeesTheConvertedLine) {
  std::vector<uint8_t> seen;
  engine_.During("HPESendBand", [&] { seen.assign(line_.begin(), line_.begin() + 8); });
  EXPECT_TRUE(SendLine(variables_, line_.data(), 2, 601));
  EXPECT_THAT(seen, ElementsAre(1, 2, 3, 0, 5, 6, 7, 0));
}

TEST_F(BandTest, LinesOutsideTheBandAreSkipped) {
  for (const uint32_t y : {0u, 600u, 2234u, 3000u}) {
    EXPECT_TRUE(SendLine(variables_, line_.data(), 2, y)) << y;
  }
  EXPECT_THAT(engine_.calls(), IsEmpty());
  EXPECT_EQ(line_[3], 4);
}

TEST_F(BandTest, FirstAndLastLineOfTheBandAreSent) {
  EXPECT_TRUE(SendLine(variables_, line_.data(), 2, 601));
  EXPECT_TRUE(SendLine(variables_, line_.data(), 2, 2233));
  EXPECT_EQ(engine_.calls().size(), 2u);
}

TEST_F(BandTest, RefusedLineIsLoggedWithThreeBytesAPixelAndItsFirstNineBytes) {
  engine_.Answer("HPESendBand", -5);
  EXPECT_FALSE(SendLine(variables_, line_.data(), 2834, 601));
  char expected[300];
  snprintf(expected, sizeof expected,
           "Error:  HPESendBand Failed err=-5 y=601 numRaster=1, PixelPerRaster 2834, "
           "BytesPerRaster 8502, ScanLine %p 1 2 3 0 5 6 7 0 9",
           static_cast<const void*>(line_.data()));
  EXPECT_THAT(LogLines(), ElementsAre(expected));
}

TEST_F(BandTest, RefusedLineOfOnePixelIsNotReadBeyondItsEnd) {
  engine_.Answer("HPESendBand", 7);
  std::vector<uint8_t> pixel = {1, 2, 3, 4};
  EXPECT_FALSE(SendLine(variables_, pixel.data(), 1, 601));
  ASSERT_EQ(LogLines().size(), 1u);
  EXPECT_THAT(LogLines()[0],
              testing::StartsWith("Error:  HPESendBand Failed err=7 y=601 numRaster=1, "
                                  "PixelPerRaster 1, BytesPerRaster 3, ScanLine 0x"));
  EXPECT_THAT(LogLines()[0], testing::ContainsRegex(" 1 2 3 0 "));
}

TEST_F(BandTest, MissingEntryIsARefusalWithStatusTwo) {
  engine_entries.HPESendBand.Set(nullptr);
  EXPECT_FALSE(SendLine(variables_, line_.data(), 2, 601));
  ASSERT_EQ(LogLines().size(), 1u);
  EXPECT_THAT(LogLines()[0], testing::StartsWith("Error:  HPESendBand Failed err=2 y=601 "));
}

TEST_F(BandTest, ConversionSeesTheLow16BitsOfALongLineTheEngineAll) {
  EXPECT_TRUE(SendLine(variables_, line_.data(), 65537, 601));
  EXPECT_THAT(engine_.calls(), ElementsAre("HPESendBand(engine, 0, 601, 1, 65537, 262148, data)"));
  EXPECT_EQ(line_[3], 0);
  EXPECT_EQ(line_[7], 8);
}

TEST_F(BandTest, ConversionSeesTheLow16BitsOfTheLineNumberTheEngineAll) {
  EXPECT_TRUE(SendLine(variables_, line_.data(), 2, 65536 + 601));
  EXPECT_TRUE(SendLine(variables_, line_.data(), 2, 65536 + 600));
  EXPECT_THAT(engine_.calls(), ElementsAre("HPESendBand(engine, 0, 66137, 1, 2, 8, data)"));
}

TEST_F(BandTest, RefusalIsADetail) {
  const test::LogCapture log(1);
  engine_.Answer("HPESendBand", 7);
  EXPECT_FALSE(SendLine(variables_, line_.data(), 2, 601));
  EXPECT_THAT(log.Lines(),
              ElementsAre(testing::StartsWith("Error:  HPESendBand Failed err=7 y=601 ")));
}

}  // namespace
}  // namespace zr7700
