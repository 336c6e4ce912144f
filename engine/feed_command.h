// The feed commands in the engine's output, and their adjustment.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_FEED_COMMAND_H_
#define ZR7700_ENGINE_FEED_COMMAND_H_

#include <cstdint>
#include <span>

namespace zr7700 {

// Shifts the first feed command of `block` (1B 2A 07 66, then the feed value in four bytes, most
// significant first) by `adjustment`, modulo 2^32, in place. False, with the block as it was, when
// there is none: a command whose value does not lie in the block whole is none. A later command of
// the block stays as it is. Main thread.
bool AdjustFirstFeed(int32_t adjustment, std::span<uint8_t> block);

// The two-byte form (1B 23 01 00, the value 103 bytes further on, high byte first): adds
// `adjustment` to it, modulo 2^16, in the first `length_bytes` bytes at `data`, sets `found` and
// answers 1. Answers 0, with nothing changed, where there is no such command or its value lies
// outside. Main thread.
int AdjustFeed16(uint8_t* data, const uint32_t& length_bytes, bool& found, int16_t adjustment);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_FEED_COMMAND_H_
