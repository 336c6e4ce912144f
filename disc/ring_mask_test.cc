// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/ring_mask.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "engine/clip_buffers.h"
#include "engine/plain_conversion.h"

namespace zr7700 {
namespace {

constexpr uint8_t kInk = 9;

TargetPage PageOf(uint32_t side, uint32_t margin, uint32_t hole_radius) {
  TargetPage page = {};
  page.header.cupsWidth = side;
  page.header.cupsHeight = side;
  page.margin_dots = margin;
  page.hole_radius_dots = hole_radius;
  return page;
}

Canvas Masked(const TargetPage& page) {
  auto canvas = Canvas::Create(page.header.cupsWidth, page.header.cupsHeight);
  for (uint32_t y = 0; y < canvas->height(); ++y) {
    std::fill(canvas->Line(y).begin(), canvas->Line(y).end(), kInk);
  }
  WhitenOffTheRing(page, *canvas);
  return std::move(*canvas);
}

bool HasInk(const Canvas& canvas, uint32_t x, uint32_t y) { return canvas.Line(y)[x * 3] == kInk; }

uint32_t InkOf(const Canvas& canvas, uint32_t y) {
  uint32_t dots = 0;
  for (uint32_t x = 0; x < canvas.width(); ++x) dots += HasInk(canvas, x, y);
  return dots;
}

// The production filter's own opinion of a line that is all ink.
class Filter {
 public:
  Filter(uint32_t side, uint32_t margin, uint32_t hole_tenths_mm) {
    variables_.clipBufferBytes = 20400;
    variables_.maxImageDots = 5100;
    variables_.discForm = 1;
    variables_.InkSaturation = 100;
    variables_.InnerDiam = hole_tenths_mm;
    variables_.OuterMargin = margin;
    variables_.imageWidth = side;
    variables_.imageHeight = side;
    variables_.leftOutputImage = margin;
    variables_.rightOutputImage = side - margin;
    variables_.topOutputImage = static_cast<uint16_t>(margin);
    variables_.bottomOutputImage = static_cast<uint16_t>(side - margin);
    EXPECT_TRUE(ClipDataBufsCreate(variables_));
  }
  ~Filter() { ClipDataBufsDelete(variables_); }

  bool Prints(uint32_t side, uint32_t x, uint32_t y) {
    if (y != line_y_) {
      line_.assign(size_t{side} * 4, kInk);
      sent_ = ConvertLinePlainly(variables_, line_.data(), static_cast<uint16_t>(side),
                                 static_cast<uint16_t>(y));
      line_y_ = y;
    }
    return sent_ && line_[x * 4] == kInk;
  }

 private:
  JobVariables variables_ = {};
  std::vector<uint8_t> line_;
  uint32_t line_y_ = UINT32_MAX;
  bool sent_ = false;
};

struct Geometry {
  uint32_t side;
  uint32_t margin;
  uint32_t hole_tenths_mm;
};

class RingMask : public ::testing::TestWithParam<Geometry> {};

TEST_P(RingMask, LeavesWhatTheFilterPrintsOnEveryLineButTheMiddleOfAnOddPage) {
  const auto [side, margin, hole] = GetParam();
  Filter filter(side, margin, hole);
  const Canvas canvas = Masked(PageOf(side, margin, hole * 300 / 254));
  for (uint32_t y = 0; y < side; ++y) {
    if (side % 2 == 1 && y == side / 2) continue;
    for (uint32_t x = 0; x < side; ++x) {
      ASSERT_EQ(HasInk(canvas, x, y), filter.Prints(side, x, y)) << x << ", " << y;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Discs, RingMask,
                         ::testing::Values(Geometry{2834, 23, 220}, Geometry{1417, 11, 110},
                                           Geometry{1890, 118, 460}, Geometry{945, 23, 220},
                                           Geometry{1890, 0, 0}, Geometry{101, 3, 20},
                                           Geometry{100, 50, 0}, Geometry{100, 10, 20}));

TEST(RingMaskOfAnOddPage, TheMiddleLineIsAsWideAsItsNeighboursOrADotMore) {
  const Canvas canvas = Masked(PageOf(1417, 11, 129));
  const uint32_t above = InkOf(canvas, 707);
  EXPECT_EQ(InkOf(canvas, 709), above);
  EXPECT_GE(InkOf(canvas, 708), above);
  // A dot on each side, and the hole's half-widths beside the middle differ by less than one.
  EXPECT_LE(InkOf(canvas, 708), above + 4);
  // At its ends 11 dots are margin.
  EXPECT_FALSE(HasInk(canvas, 10, 708));
  EXPECT_FALSE(HasInk(canvas, 1407, 708));
  EXPECT_TRUE(HasInk(canvas, 20, 708));
}

TEST(RingMaskOfADisc, MarginHoleAndCornersAreWhite) {
  const Canvas canvas = Masked(PageOf(2834, 23, 259));
  EXPECT_FALSE(HasInk(canvas, 1417, 23));
  EXPECT_TRUE(HasInk(canvas, 1417, 24));
  EXPECT_TRUE(HasInk(canvas, 1417, 2810));
  EXPECT_FALSE(HasInk(canvas, 1417, 2811));
  EXPECT_FALSE(HasInk(canvas, 1417, 1417));
  EXPECT_FALSE(HasInk(canvas, 1417 - 250, 1417));
  EXPECT_TRUE(HasInk(canvas, 1417 - 262, 1417));
  EXPECT_FALSE(HasInk(canvas, 400, 400));
  EXPECT_TRUE(HasInk(canvas, 500, 500));  // 917 x 1.414 = 1297 of 1394
}

}  // namespace
}  // namespace zr7700
