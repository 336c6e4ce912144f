// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/line_conversion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "engine/clip_buffers.h"
#include "engine/plain_conversion.h"

namespace zr7700 {
namespace {

using testing::ElementsAre;

constexpr uint16_t kLine = 3;

// The job variables of a page whose clip table has one interesting line, kLine.
class Page {
 public:
  explicit Page(ClipEntry entry = {0, 0}) {
    memcpy(&table_[kLine * kClipEntryBytes], &entry, sizeof entry);
    variables.clipDataBufs = table_.data();
    variables.clipBufferBytes = static_cast<uint32_t>(table_.size());
    variables.maxImageDots = 5100;
    variables.topOutputImage = 0;
    variables.bottomOutputImage = 65535;
    variables.ColorMatching = 1;
    variables.DiscSurfaceQuality = 1;
    variables.InkSaturation = 100;
    variables.nPhotoThreshold = 700;
    variables.nRunCompValue = 1;
    variables.nRunCompDiv = 3000;
  }
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;

  JobVariables variables = {};

 private:
  std::vector<uint8_t> table_ = std::vector<uint8_t>(10 * kClipEntryBytes);
};

std::vector<uint8_t> RandomLine(size_t width, uint32_t seed) {
  std::mt19937 random(seed);
  std::vector<uint8_t> line(width * 4);
  for (uint8_t& byte : line) byte = static_cast<uint8_t>(random());
  return line;
}

// The conversion once more, in 64-bit arithmetic, from a pixel's counter and the line's entry.
void ConvertPixelAnew(const JobVariables& v, uint64_t width, uint64_t n, uint8_t* pixel) {
  ClipEntry entry;
  memcpy(&entry, v.clipDataBufs + kLine * kClipEntryBytes, sizeof entry);
  const uint64_t half = width / 2;
  uint64_t outer_high = v.maxImageDots & 0xFFFF, outer_low = 0;
  uint64_t inner_high = 0, inner_low = v.maxImageDots & 0xFFFF;
  if (entry.outer > 0 && entry.outer < half) {
    outer_high = half + entry.outer;
    outer_low = half - entry.outer;
  }
  if (entry.inner > 0 && entry.inner < width) {
    inner_high = (half + entry.inner) & 0xFFFF;
    inner_low = (half - entry.inner) & 0xFFFF;
  }
  pixel[3] = 0;
  if (n > outer_high || n < outer_low || (n < inner_high && n > inner_low)) {
    memset(pixel, 0xFF, 3);
    return;
  }
  int64_t ink[3], sum = 0;
  for (int i = 0; i < 3; ++i) {
    ink[i] = 255 - pixel[i];
    if (v.InkSaturation != 100) ink[i] = ink[i] * (v.InkSaturation + 28) / 128 % 256;
    sum += ink[i];
  }
  const bool limiting = v.ColorMatching == 2 || (v.DiscSurfaceQuality / 3 == 1);
  const int64_t limit = v.ColorMatching == 2 ? static_cast<int32_t>(v.nPhotoThreshold) : 255;
  const int64_t divisor = static_cast<int32_t>(v.nRunCompDiv);
  if (limiting && sum > limit && divisor != 0) {
    for (int64_t& value : ink) {
      const auto product = static_cast<uint64_t>(sum - limit) * v.nRunCompValue;
      const auto low =
          static_cast<int32_t>(static_cast<uint32_t>(product * static_cast<uint64_t>(value)));
      value -= low / divisor;
    }
  }
  for (int i = 0; i < 3; ++i) pixel[i] = static_cast<uint8_t>(255 - ink[i]);
}

// Both forms give the same bytes, and those of the second computation.
void ExpectEqualForms(const Page& page, uint16_t width, const std::string& what) {
  const std::vector<uint8_t> line = RandomLine(width, width + 1U);
  std::vector<uint8_t> fast = line, plain = line, anew = line;
  ASSERT_TRUE(ConvertLine(page.variables, fast.data(), width, kLine));
  ASSERT_TRUE(ConvertLinePlainly(page.variables, plain.data(), width, kLine));
  for (size_t i = 0; i < width; ++i)
    ConvertPixelAnew(page.variables, width, width - i, &anew[4 * i]);
  ASSERT_EQ(fast, plain) << what << ", width " << width;
  ASSERT_EQ(plain, anew) << what << ", width " << width;
}

// Widths of all remainders, then of real and of impossible pages.
std::vector<uint16_t> Widths() {
  std::vector<uint16_t> widths;
  for (uint16_t width = 0; width <= 67; ++width) widths.push_back(width);
  widths.insert(widths.end(),
                {128, 1000, 2833, 2834, 5100, 5101, 6000, 32767, 32768, 65534, 65535});
  return widths;
}

TEST(LineConversion, FormsAreEqualAtEveryWidthInEveryClipSituation) {
  for (const uint16_t width : Widths()) {
    const auto half = static_cast<uint16_t>(width / 2);
    const auto at = [](int value) { return static_cast<uint16_t>(value); };
    for (const uint16_t outer : {at(0), at(1), at(half / 2), at(half - 1), half, at(half + 1)}) {
      for (const uint16_t inner : {at(0), at(1), at(half / 3), at(half - 1), half, at(half + 1),
                                   at(width - 1), width, at(65535)}) {
        Page page({outer, inner});
        page.variables.InkSaturation = 90;
        const std::string what = std::to_string(outer) + "/" + std::to_string(inner);
        ASSERT_NO_FATAL_FAILURE(ExpectEqualForms(page, width, what));
      }
    }
  }
}

TEST(LineConversion, FormsAreEqualAtEverySaturationWithAndWithoutLimit) {
  for (int saturation = 0; saturation < 256; ++saturation) {
    for (const uint8_t medium : {uint8_t{1}, uint8_t{5}}) {
      for (const uint8_t colors : {uint8_t{1}, uint8_t{2}}) {
        Page page({20, 5});
        page.variables.InkSaturation = static_cast<uint8_t>(saturation);
        page.variables.DiscSurfaceQuality = medium;
        page.variables.ColorMatching = colors;
        ASSERT_NO_FATAL_FAILURE(ExpectEqualForms(page, 67, std::to_string(saturation)));
      }
    }
  }
}

TEST(LineConversion, FormsAreEqualWithExtremeInkLimits) {
  const uint32_t extremes[] = {0,          1,          2,          3000,      65535,
                               0x7FFFFFFF, 0x80000000, 0x80000001, 0xFFFFFFFF};
  for (const uint32_t value : extremes) {
    for (const uint32_t divisor : extremes) {
      for (const uint32_t threshold : {0u, 1u, 255u, 700u, 764u, 765u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        Page page;
        page.variables.ColorMatching = 2;
        page.variables.nRunCompValue = value;
        page.variables.nRunCompDiv = divisor;
        page.variables.nPhotoThreshold = threshold;
        const std::string what = std::to_string(value) + "/" + std::to_string(divisor);
        ASSERT_NO_FATAL_FAILURE(ExpectEqualForms(page, 61, what));
      }
    }
  }
}

using Form = bool (*)(const JobVariables&, uint8_t*, uint16_t, uint16_t);

// The cases of both forms.
class EachForm : public testing::TestWithParam<Form> {
 protected:
  std::vector<int> Converted(const JobVariables& variables, std::vector<uint8_t> line) {
    EXPECT_TRUE(GetParam()(variables, line.data(), static_cast<uint16_t>(line.size() / 4), kLine));
    return {line.begin(), line.end()};
  }
};
INSTANTIATE_TEST_SUITE_P(LineConversion, EachForm,
                         testing::Values(&ConvertLine, &ConvertLinePlainly),
                         [](const testing::TestParamInfo<Form>& form) {
                           return form.param == &ConvertLine ? "Fast" : "Plain";
                         });

TEST_P(EachForm, LinesOnAndOutsideTheBandsEdgesAreLeftAlone) {
  Page page;
  page.variables.topOutputImage = 600;
  page.variables.bottomOutputImage = 2234;
  uint8_t pixel[4] = {1, 2, 3, 4};
  for (const int y : {0, 599, 600, 2234, 2235, 65535}) {
    EXPECT_FALSE(GetParam()(page.variables, pixel, 1, static_cast<uint16_t>(y))) << y;
    EXPECT_THAT(pixel, ElementsAre(1, 2, 3, 4)) << y;
  }
  EXPECT_TRUE(GetParam()(page.variables, pixel, 1, 601));
  EXPECT_TRUE(GetParam()(page.variables, pixel, 1, 2233));
}

TEST_P(EachForm, BandThatEndsBeforeItBeginsHoldsNoLine) {
  Page page;
  page.variables.topOutputImage = 65529;  // a negative margin
  page.variables.bottomOutputImage = 2841;
  uint8_t pixel[4] = {};
  for (const int y : {0, 100, 2840, 65530}) {
    EXPECT_FALSE(GetParam()(page.variables, pixel, 1, static_cast<uint16_t>(y))) << y;
  }
}

TEST_P(EachForm, WithoutInkRulesOnlyThePadBytesAreCleared) {
  const Page page;
  EXPECT_THAT(Converted(page.variables, {1, 2, 3, 4, 255, 0, 128, 255}),
              ElementsAre(1, 2, 3, 0, 255, 0, 128, 0));
}

TEST_P(EachForm, NarrowRingWhitensBothEdgesAndTheHole) {
  const Page page({3, 2});  // of 8 pixels, n = 8..1: outside 8 and below 1; inside 3, 4, 5
  const std::vector<int> line = Converted(page.variables, std::vector<uint8_t>(32, 7));
  const std::vector<int> white = {255, 255, 255, 0}, kept = {7, 7, 7, 0};
  for (size_t i = 0; i < 8; ++i) {
    const size_t n = 8 - i;
    const bool clipped = n == 8 || (n >= 3 && n <= 5);
    EXPECT_EQ(std::vector<int>(&line[4 * i], &line[4 * i] + 4), clipped ? white : kept) << n;
  }
}

TEST_P(EachForm, UsualRingOfAWholeLine) {
  const Page page({1400, 300});
  const std::vector<int> line = Converted(page.variables, std::vector<uint8_t>(2834 * 4, 7));
  for (int n = 2834; n > 0; --n) {
    const bool white = n > 2817 || n < 17 || (n > 1117 && n < 1717);
    const auto red = static_cast<size_t>(2834 - n) * 4;
    ASSERT_EQ(line[red], white ? 255 : 7) << n;
    ASSERT_EQ(line[red + 3], 0) << n;
  }
}

TEST_P(EachForm, ClippedPixelIsWhiteWhateverTheInkRules) {
  Page page({1, 0});
  page.variables.InkSaturation = 120;
  page.variables.ColorMatching = 2;
  // n = 4 and n = 0 lie outside 1 to 3.
  const std::vector<int> line = Converted(page.variables, std::vector<uint8_t>(16, 0));
  EXPECT_EQ(std::vector<int>(line.begin(), line.begin() + 4), (std::vector<int>{255, 255, 255, 0}));
}

TEST_P(EachForm, EntryOfZerosConvertsColoursAlone) {
  Page page;
  page.variables.InkSaturation = 90;
  // Ink 200 becomes 184.
  EXPECT_THAT(Converted(page.variables, {55, 255, 55, 9}), ElementsAre(71, 255, 71, 0));
}

TEST_P(EachForm, SaturationAbove100Wraps) {
  Page page;
  page.variables.InkSaturation = 120;
  EXPECT_THAT(Converted(page.variables, {0, 255, 0, 9}), ElementsAre(217, 255, 217, 0));
}

TEST_P(EachForm, BlackOnAHighQualityMediumLosesInk) {
  Page page;
  page.variables.DiscSurfaceQuality = 5;
  EXPECT_THAT(Converted(page.variables, {0, 0, 0, 9}), ElementsAre(43, 43, 43, 0));
}

TEST_P(EachForm, DivisorZeroTakesNothingOff) {
  Page page;
  page.variables.DiscSurfaceQuality = 5;
  page.variables.nRunCompDiv = 0;
  EXPECT_THAT(Converted(page.variables, {0, 0, 0, 9}), ElementsAre(0, 0, 0, 0));
}

TEST_P(EachForm, WithoutATableNothingIsClipped) {
  Page page({1, 0});
  page.variables.clipDataBufs = nullptr;
  EXPECT_THAT(Converted(page.variables, std::vector<uint8_t>(8, 1)),
              ElementsAre(1, 1, 1, 0, 1, 1, 1, 0));
}

TEST_P(EachForm, PixelsBeyondTheLargestImageAreClippedEvenWithoutAnOuterLimit) {
  Page page;
  page.variables.maxImageDots = 2;
  // n = 3 is above 2.
  EXPECT_THAT(Converted(page.variables, std::vector<uint8_t>(12, 1)),
              ElementsAre(255, 255, 255, 0, 1, 1, 1, 0, 1, 1, 1, 0));
}

TEST(LineConversion, FastFormFollowsAChangeOfRules) {
  Page page;
  page.variables.InkSaturation = 90;
  uint8_t pixel[4] = {55, 55, 55, 0};
  ASSERT_TRUE(ConvertLine(page.variables, pixel, 1, kLine));
  EXPECT_EQ(pixel[0], 71);
  page.variables.InkSaturation = 100;
  ASSERT_TRUE(ConvertLine(page.variables, pixel, 1, kLine));
  EXPECT_EQ(pixel[0], 71);
}

TEST(LineConversion, NothingBeyondTheWidthIsTouched) {
  for (const uint16_t width : Widths()) {
    Page page({1, 1});
    page.variables.InkSaturation = 50;
    std::vector<uint8_t> line((width + 1U) * 4U, 0x55);
    ASSERT_TRUE(ConvertLine(page.variables, line.data(), width, kLine));
    ASSERT_THAT(std::vector<int>(line.end() - 4, line.end()), testing::Each(0x55)) << width;
  }
}

}  // namespace
}  // namespace zr7700
