// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/png_exif.h"

#include <array>
#include <cstring>

namespace zr7700 {
namespace {

constexpr long kSignature_bytes = 8;
constexpr long kChecksum_bytes = 4;
constexpr uint32_t kMost_bytes = 65536;
// A file of nothing but empty chunks has an end, too.
constexpr int kMostChunks = 1'000'000;

struct Chunk {
  uint32_t bytes;
  std::array<char, 4> name;

  bool Is(const char* other) const { return std::memcmp(name.data(), other, name.size()) == 0; }
};

bool ReadChunk(FILE* file, Chunk& chunk) {
  std::array<uint8_t, 4> length;
  if (fread(length.data(), length.size(), 1, file) != 1) return false;
  if (fread(chunk.name.data(), chunk.name.size(), 1, file) != 1) return false;
  chunk.bytes = uint32_t{length[0]} << 24 | uint32_t{length[1]} << 16 | uint32_t{length[2]} << 8 |
                uint32_t{length[3]};
  return chunk.bytes <= INT32_MAX && !chunk.Is("IEND");
}

}  // namespace

std::vector<uint8_t> FindPngExif(FILE* file) {
  if (fseek(file, kSignature_bytes, SEEK_SET) != 0) return {};
  Chunk chunk;
  for (int i = 0; i < kMostChunks && ReadChunk(file, chunk); ++i) {
    if (chunk.Is("eXIf") && chunk.bytes <= kMost_bytes) {
      std::vector<uint8_t> exif(chunk.bytes);
      if (!exif.empty() && fread(exif.data(), exif.size(), 1, file) != 1) return {};
      return exif;
    }
    if (fseek(file, static_cast<long>(chunk.bytes) + kChecksum_bytes, SEEK_CUR) != 0) return {};
  }
  return {};
}

}  // namespace zr7700
