// Both feed adjusters on any block, against a search and a sum byte by byte.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cstring>
#include <vector>

#include "engine/feed_command.h"
#include "fuzz/input.h"

namespace {

using Bytes = std::vector<uint8_t>;
using zr7700::fuzz::Require;

bool StandsAt(const Bytes& block, size_t i, const char* command) {
  return i + 4 <= block.size() && memcmp(&block[i], command, 4) == 0;
}

size_t FirstOf(const Bytes& block, const char* command) {
  size_t i = 0;
  while (i < block.size() && !StandsAt(block, i, command)) ++i;
  return i;
}

// Adds to a big-endian number, a byte and its carry at a time.
void AddBigEndian(uint8_t* bytes, int count, int64_t summand) {
  int64_t carry = summand;
  for (int i = count - 1; i >= 0; --i) {
    carry += bytes[i];
    bytes[i] = static_cast<uint8_t>(carry & 0xFF);
    carry >>= 8;
  }
}

void CheckFirstFeed(Bytes block, int32_t adjustment) {
  Bytes expected = block;
  const size_t at = FirstOf(block,
                            "\x1B*\x07"
                            "f");
  const bool counts = at + 8 <= block.size();
  if (counts) AddBigEndian(&expected[at + 4], 4, adjustment);
  Require(zr7700::AdjustFirstFeed(adjustment, block) == counts);
  Require(block == expected);
}

void CheckFeed16(Bytes block, int16_t adjustment) {
  Bytes expected = block;
  const size_t at = FirstOf(block, "\x1B#\x01\0");
  const bool counts = at + 105 <= block.size();
  if (counts) AddBigEndian(&expected[at + 103], 2, adjustment);
  bool found = false;
  const auto length = static_cast<uint32_t>(block.size());
  Require(zr7700::AdjustFeed16(block.data(), length, found, adjustment) == (counts ? 1 : 0));
  Require(found == counts);
  Require(block == expected);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  zr7700::fuzz::Input input(data, bytes);
  const uint32_t adjustment = input.U32();
  const Bytes block(input.Rest().begin(), input.Rest().end());
  CheckFirstFeed(block, static_cast<int32_t>(adjustment));
  CheckFeed16(block, static_cast<int16_t>(adjustment));
  return 0;
}
