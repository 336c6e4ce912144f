// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/feed_command.h"

#include <cstring>

#include "base/bytes.h"
#include "base/log.h"

namespace zr7700 {
namespace {

constexpr uint8_t kFeed[] = {0x1B, 0x2A, 0x07, 0x66};
constexpr size_t kFeedBytes = sizeof kFeed + 4;
constexpr uint8_t kFeed16[] = {0x1B, 0x23, 0x01, 0x00};
constexpr size_t kFeed16ValueOffset = 103;

template <size_t kBytes>
uint8_t* Find(std::span<uint8_t> block, const uint8_t (&command)[kBytes]) {
  // An empty block may have no address, and memmem wants one.
  if (block.size() < kBytes) return nullptr;
  return static_cast<uint8_t*>(memmem(block.data(), block.size(), command, kBytes));
}

void LogFeed(const char* text, uint32_t value, const uint8_t* bytes) {
  LogMessage(kLogMilestone, "%s%u, {0x%.2x, 0x%.2x, 0x%.2x, 0x%.2x}\n", text, value, bytes[0],
             bytes[1], bytes[2], bytes[3]);
}

}  // namespace

bool AdjustFirstFeed(int32_t adjustment, std::span<uint8_t> block) {
  uint8_t* const command = Find(block, kFeed);
  if (command == nullptr) return false;
  const auto position = static_cast<size_t>(command - block.data());
  if (block.size() - position < kFeedBytes) return false;
  uint8_t* const value_bytes = command + sizeof kFeed;
  const uint32_t found_value = LoadBigEndian32(value_bytes);
  LogFeed("**Found FEED: ", found_value, value_bytes);
  const uint32_t adjusted = found_value + static_cast<uint32_t>(adjustment);
  StoreBigEndian32(adjusted, value_bytes);
  LogFeed("**Set FEED: ", adjusted, value_bytes);
  return true;
}

int AdjustFeed16(uint8_t* data, const uint32_t& length_bytes, bool& found, int16_t adjustment) {
  const std::span<uint8_t> block(data, length_bytes);
  uint8_t* const command = Find(block, kFeed16);
  if (command == nullptr) return 0;
  const auto value_position = static_cast<size_t>(command - data) + kFeed16ValueOffset;
  if (value_position + 1 >= block.size()) return 0;
  found = true;
  // The value is read relative to the command; the bytes that the log shows are those at fixed
  // places of the block.
  const uint8_t* const shown = data + kFeed16ValueOffset;
  uint8_t* const value_bytes = data + value_position;
  const int value = value_bytes[0] << 8 | value_bytes[1];
  LogMessage(kLogDetail, "**Found FEED: %d, {0x%.2x, 0x%.2x}", value, shown[0], shown[1]);
  const auto sum = static_cast<uint16_t>(value + adjustment);
  value_bytes[0] = static_cast<uint8_t>(sum >> 8);
  value_bytes[1] = static_cast<uint8_t>(sum);
  LogMessage(kLogDetail, "**Set FEED: %d  {0x%.2x, 0x%.2x}", sum, shown[0], shown[1]);
  return 1;
}

}  // namespace zr7700
