// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/canvas.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zr7700 {
namespace {

TEST(Canvas, IsWhiteAtFirstAndAfterClear) {
  auto canvas = Canvas::Create(2, 3);
  ASSERT_TRUE(canvas);
  EXPECT_TRUE(canvas->IsWhite());
  canvas->Line(2)[5] = 254;
  EXPECT_FALSE(canvas->IsWhite());
  canvas->Clear();
  EXPECT_TRUE(canvas->IsWhite());
}

TEST(Canvas, LinesLieApart) {
  auto canvas = Canvas::Create(2, 3);
  ASSERT_TRUE(canvas);
  std::fill(canvas->Line(1).begin(), canvas->Line(1).end(), uint8_t{7});
  for (const uint32_t y : {0U, 2U}) {
    const auto line = canvas->Line(y);
    EXPECT_EQ(line.size(), 6U);
    EXPECT_TRUE(std::all_of(line.begin(), line.end(), [](int v) { return v == 255; })) << y;
  }
}

}  // namespace
}  // namespace zr7700
