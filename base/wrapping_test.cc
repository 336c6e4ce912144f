// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/wrapping.h"

#include <gtest/gtest.h>

namespace zr7700 {
namespace {

TEST(Wrapping, SumsDifferencesAndProductsAreModulo2To32) {
  EXPECT_EQ(WrappingAdd(INT32_MAX, 1), INT32_MIN);
  EXPECT_EQ(WrappingSubtract(INT32_MIN, 1), INT32_MAX);
  EXPECT_EQ(WrappingMultiply(65536, 65536), 0);
  EXPECT_EQ(WrappingMultiply(INT32_MAX, 2), -2);
  EXPECT_EQ(WrappingMultiply(INT32_MIN, -1), INT32_MIN);
}

TEST(Wrapping, QuotientsAreCutTowardZero) {
  EXPECT_EQ(WrappingDivide(-7, 2), -3);
  EXPECT_EQ(WrappingDivide(7, -2), -3);
  EXPECT_EQ(WrappingDivide(7, -1), -7);
  EXPECT_EQ(WrappingDivide(INT32_MIN, -1), INT32_MIN);
}

}  // namespace
}  // namespace zr7700
