// Reads all pictures of a fuzzer's input as the filter for pictures does.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_FUZZ_PICTURE_INPUT_H_
#define ZR7700_FUZZ_PICTURE_INPUT_H_

#include <cstdio>
#include <memory>
#include <vector>

#include "fuzz/input.h"
#include "picture_filter/picture.h"

namespace zr7700::fuzz {

constexpr int kMostPictures = 20;
constexpr uint64_t kMostDots = 1 << 20;  // of a picture that is worth the time

// What every reader promises of the picture that it is at. False once it has refused the file.
inline bool ReadPicture(PictureReader& reader, Dots enough) {
  const Picture& picture = reader.picture();
  Require(CheckDots(picture.dots).empty());
  Require(IsDensity(picture.density.across) && IsDensity(picture.density.down));
  if (uint64_t{picture.dots.width} * picture.dots.height > kMostDots) return true;
  if (!reader.Begin(enough)) return false;
  const Dots dots = reader.decoded();
  Require(dots.width >= 1 && dots.width <= picture.dots.width);
  Require(dots.height >= 1 && dots.height <= picture.dots.height);
  std::vector<uint8_t> line(size_t{dots.width} * 3);
  for (uint32_t y = 0; y < dots.height; ++y) {
    if (!reader.ReadLine(line)) return false;
  }
  return reader.End();
}

// The first byte says how much a JPEG may be reduced; the file follows.
inline void ReadPictures(std::unique_ptr<PictureReader> (*make_reader)(FILE*),
                         std::vector<uint8_t> input) {
  if (input.size() < 2) return;
  const Dots enough = {.width = input[0] * 8U, .height = input[0] * 8U};
  const std::unique_ptr<FILE, int (*)(FILE*)> file(
      fmemopen(input.data() + 1, input.size() - 1, "rb"), &fclose);
  const auto reader = make_reader(file.get());
  for (int i = 0; i < kMostPictures; ++i) {
    const PictureReader::Next next = reader->NextPicture();
    Require((next == PictureReader::Next::kRefused) == !reader->error().empty());
    if (next != PictureReader::Next::kPicture) return;
    const bool is_read = ReadPicture(*reader, enough);
    Require(is_read == reader->error().empty());
    if (!is_read) return;
  }
}

}  // namespace zr7700::fuzz

#endif  // ZR7700_FUZZ_PICTURE_INPUT_H_
