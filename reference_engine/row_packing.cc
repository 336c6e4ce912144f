// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/row_packing.h"

#include <algorithm>
#include <cstring>

namespace zr7700::reference_engine {
namespace {

constexpr uint8_t kEscape = 0x1A;
constexpr uint8_t kCommandStart = 0x1B;
constexpr size_t kMaxLiterals = 128;

// A run shorter than this costs no less than its literals.
constexpr size_t kShortestRun = 3;
constexpr size_t kShortestZeroRun = 2;

bool NeedsEscape(uint8_t byte) { return byte == kEscape || byte == kCommandStart; }

// True when one of the 16 bytes needs an escape; without a branch, so that it becomes a vector.
bool ChunkNeedsEscape(const uint8_t* chunk) {
  unsigned found = 0;
  for (size_t i = 0; i < 16; ++i) found |= static_cast<unsigned>((chunk[i] | 1) == kCommandStart);
  return found != 0;
}

uint8_t* EscapeBytes(const uint8_t* bytes, size_t count, uint8_t* out) {
  for (size_t i = 0; i < count; ++i) {
    if (NeedsEscape(bytes[i])) {
      *out++ = kEscape;
      *out++ = bytes[i] - kEscape;
    } else {
      *out++ = bytes[i];
    }
  }
  return out;
}

// Written out byte by byte so that the order does not depend on the host; compilers make one load
// of it.
uint32_t Load32(const uint8_t* bytes) {
  return bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}
uint64_t Load64(const uint8_t* bytes) { return Load32(bytes) | uint64_t{Load32(bytes + 4)} << 32; }

// Four levels, the first one highest: the product moves level i from bit 8i to bit 30 - 2i, and all
// its other terms fall below bit 24 or out.
uint8_t PackFour(const uint8_t* levels) {
  return static_cast<uint8_t>(Load32(levels) * 0x40100401U >> 24);
}

// Bit `bit` of eight levels, the first level lowest: the product moves bit 8i to bit 56 + i.
uint8_t PackEight(const uint8_t* levels, int bit) {
  const uint64_t bits = Load64(levels) >> bit & 0x0101010101010101U;
  return static_cast<uint8_t>(bits * 0x0102040810204080U >> 56);
}

// True when one of the eight bytes is 0; true by mistake only above a byte that is.
bool HasZeroByte(uint64_t bytes) {
  return ((bytes - 0x0101010101010101U) & ~bytes & 0x8080808080808080U) != 0;
}

// Whether one of the eight bytes at `at` begins three equal ones, or two zeros; reads ten bytes.
bool BeginsTriple(const uint8_t* at) {
  const uint64_t next = Load64(at + 1);
  return HasZeroByte((Load64(at) ^ next) | (next ^ Load64(at + 2)));
}
bool BeginsZeroPair(const uint8_t* at) { return HasZeroByte(Load64(at) | Load64(at + 1)); }

void AppendLiterals(std::span<const uint8_t> bytes, std::vector<uint8_t>* out) {
  while (!bytes.empty()) {
    const size_t count = std::min(bytes.size(), kMaxLiterals);
    out->push_back(static_cast<uint8_t>(count - 1));
    out->insert(out->end(), bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(count));
    bytes = bytes.subspan(count);
  }
}

// How often the byte at `begin` stands there in a row.
size_t RunLength(std::span<const uint8_t> bytes, size_t begin) {
  size_t end = begin + 1;
  while (end < bytes.size() && bytes[end] == bytes[begin]) ++end;
  return end - begin;
}

struct GraniteCode {
  bool MayBeginRun(const uint8_t* at) const { return BeginsTriple(at); }
  bool IsWorthARun(uint8_t /*byte*/, size_t length) const { return length >= kShortestRun; }
  void AppendRun(uint8_t byte, size_t length, std::vector<uint8_t>* out) const {
    while (length >= 2) {
      const size_t count = std::min<size_t>(length, 128);
      out->push_back(static_cast<uint8_t>(257 - count));
      out->push_back(byte);
      length -= count;
    }
    if (length == 1) out->insert(out->end(), {0x00, byte});
  }
};

struct HeronCode {
  bool MayBeginRun(const uint8_t* at) const { return BeginsTriple(at) || BeginsZeroPair(at); }
  bool IsWorthARun(uint8_t byte, size_t length) const {
    return length >= (byte == 0 ? kShortestZeroRun : kShortestRun);
  }
  void AppendRun(uint8_t byte, size_t length, std::vector<uint8_t>* out) const {
    if (byte == 0) return AppendZeros(length, out);
    while (length >= 2) {
      const size_t count = std::min<size_t>(length, 65);
      out->push_back(static_cast<uint8_t>(0xC0 + count - 2));
      out->push_back(byte);
      length -= count;
    }
    if (length == 1) out->insert(out->end(), {0x00, byte});
  }
  static void AppendZeros(size_t length, std::vector<uint8_t>* out) {
    for (; length > 0; length -= std::min<size_t>(length, 64))
      out->push_back(static_cast<uint8_t>(0x80 + std::min<size_t>(length, 64) - 1));
  }
};

// The walk over runs and literals that both compressions share. A Code tells which runs are worth
// one, whether any may begin in the next eight bytes, and how a run is written.
template <typename Code>
void Compress(std::span<const uint8_t> bytes, const Code& code, std::vector<uint8_t>* out) {
  size_t literals = 0;
  for (size_t i = 0; i < bytes.size();) {
    if (i + 10 <= bytes.size() && !code.MayBeginRun(&bytes[i])) {
      i += 8;
      continue;
    }
    const size_t run = RunLength(bytes, i);
    if (code.IsWorthARun(bytes[i], run)) {
      AppendLiterals(bytes.subspan(literals, i - literals), out);
      code.AppendRun(bytes[i], run, out);
      literals = i + run;
    }
    i += run;
  }
  AppendLiterals(bytes.subspan(literals), out);
}

}  // namespace

void AppendEscaped(std::span<const uint8_t> bytes, std::vector<uint8_t>* out) {
  const size_t old_length = out->size();
  out->resize(old_length + 2 * bytes.size());
  uint8_t* to = out->data() + old_length;
  size_t i = 0;
  for (; i + 16 <= bytes.size(); i += 16) {
    if (ChunkNeedsEscape(&bytes[i])) {
      to = EscapeBytes(&bytes[i], 16, to);
    } else {
      std::memcpy(to, &bytes[i], 16);
      to += 16;
    }
  }
  to = EscapeBytes(bytes.data() + i, bytes.size() - i, to);
  out->resize(static_cast<size_t>(to - out->data()));
}

Drops FindDrops(std::span<const uint8_t> levels) {
  size_t begin = 0;
  while (begin + 8 <= levels.size() && Load64(&levels[begin]) == 0) begin += 8;
  while (begin < levels.size() && levels[begin] == 0) ++begin;
  size_t end = levels.size();
  while (end >= begin + 8 && Load64(&levels[end - 8]) == 0) end -= 8;
  while (end > begin && levels[end - 1] == 0) --end;
  Drops drops = {begin, levels.subspan(begin, end - begin), 0};
  for (const uint8_t level : drops.levels) drops.count += level != 0;
  return drops;
}

void CompressGranite(std::span<const uint8_t> bytes, std::vector<uint8_t>* out) {
  Compress(bytes, GraniteCode(), out);
}

void CompressHeron(std::span<const uint8_t> bytes, std::vector<uint8_t>* out) {
  Compress(bytes, HeronCode(), out);
}

void RowPacker::Append(std::span<const uint8_t> levels, std::vector<uint8_t>* out) {
  // Padded with zeros to whole groups of eight, so that the loops below have no tails.
  padded_.assign(levels.begin(), levels.end());
  padded_.resize((levels.size() + 7) / 8 * 8, 0);
  compressed_.clear();
  if (family_ == Family::kGranite) {
    packed_.resize((levels.size() + 3) / 4);
    for (size_t i = 0; i < packed_.size(); ++i) packed_[i] = PackFour(&padded_[i * 4]);
    CompressGranite(packed_, &compressed_);
  } else {
    const size_t plane_bytes = padded_.size() / 8;
    packed_.resize(2 * plane_bytes);
    for (size_t i = 0; i < plane_bytes; ++i) {
      packed_[i] = PackEight(&padded_[i * 8], 0);
      packed_[plane_bytes + i] = PackEight(&padded_[i * 8], 1);
    }
    CompressHeron(packed_, &compressed_);
  }
  AppendEscaped(compressed_, out);
}

}  // namespace zr7700::reference_engine
