// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/byte_order.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zr7700 {
namespace {

TEST(ByteOrder, HostIsTheOneThatMemoryShows) {
  const uint32_t number = 1;
  uint8_t first;
  memcpy(&first, &number, 1);
  EXPECT_EQ(HostByteOrder(), first == 1 ? 1 : 2);
}

TEST(ByteOrder, SwapReversesTheFourBytes) {
  EXPECT_EQ(SwapBytes32(0x01020304), 0x04030201u);
  EXPECT_EQ(SwapBytes32(0xFFFFFFFF), 0xFFFFFFFFu);
  EXPECT_EQ(SwapBytes32(0x80), 0x80000000u);
}

}  // namespace
}  // namespace zr7700
