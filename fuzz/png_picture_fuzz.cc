// A PNG file of any bytes: read to its end, or refused with a sentence. Every other input gets
// right checksums first, so that what lies behind them is reached.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <zlib.h>

#include "fuzz/picture_input.h"
#include "picture_filter/png_reader.h"

namespace {

constexpr size_t kFirstChunk = 1 + 8;  // behind the input's own byte and the signature
constexpr size_t kAroundContent_bytes = 12;

void StoreBigEndian(uint8_t* at, uint32_t number) {
  for (int i = 0; i < 4; ++i) at[i] = static_cast<uint8_t>(number >> (24 - 8 * i));
}

void CorrectChecksums(std::vector<uint8_t>& input) {
  size_t at = kFirstChunk;
  while (at + kAroundContent_bytes <= input.size()) {
    uint8_t* const chunk = &input[at];
    const size_t content =
        size_t{chunk[0]} << 24 | size_t{chunk[1]} << 16 | size_t{chunk[2]} << 8 | size_t{chunk[3]};
    if (content > input.size() - at - kAroundContent_bytes) return;
    const uLong sum = crc32(0, chunk + 4, static_cast<uInt>(content + 4));
    StoreBigEndian(chunk + 8 + content, static_cast<uint32_t>(sum));
    at += content + kAroundContent_bytes;
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  std::vector<uint8_t> input(data, data + bytes);
  if (bytes > 0 && data[0] % 2 == 0) CorrectChecksums(input);
  zr7700::fuzz::ReadPictures(zr7700::MakePngReader, input);
  return 0;
}
