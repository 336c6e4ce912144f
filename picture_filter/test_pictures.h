// Pictures for the tests of the readers: a file in memory, and all that a reader makes of it.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_TEST_PICTURES_H_
#define ZR7700_PICTURE_FILTER_TEST_PICTURES_H_

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "picture_filter/picture_file.h"

namespace zr7700 {

using Bytes = std::vector<uint8_t>;
using Rgb = std::array<int, 3>;

constexpr Rgb kRed = {255, 0, 0};
constexpr Rgb kGreen = {0, 255, 0};
constexpr Rgb kBlue = {0, 0, 255};
constexpr Rgb kBlack = {0, 0, 0};
constexpr Rgb kWhite = {255, 255, 255};

struct DecodedPicture {
  Picture told = {};
  Dots dots = {};
  Bytes rgb = {};
  bool lacks_profile = false;

  Rgb At(uint32_t x, uint32_t y) const {
    const uint8_t* const dot = &rgb.at((size_t{y} * dots.width + x) * 3);
    return {dot[0], dot[1], dot[2]};
  }
};

struct DecodedFile {
  std::vector<DecodedPicture> pictures;
  std::string error;  // empty when the whole file could be read
};

// What is left of a reader's present picture; false when it is refused.
inline bool ReadOn(PictureReader& reader, Dots enough, DecodedPicture& picture) {
  picture.told = reader.picture();
  if (!reader.Begin(enough)) return false;
  picture.dots = reader.decoded();
  picture.lacks_profile = reader.lacks_profile();
  picture.rgb.resize(size_t{picture.dots.width} * picture.dots.height * 3);
  const size_t line_bytes = size_t{picture.dots.width} * 3;
  for (uint32_t y = 0; y < picture.dots.height; ++y) {
    if (!reader.ReadLine(std::span(picture.rgb).subspan(y * line_bytes, line_bytes))) return false;
  }
  return reader.End();
}

// All pictures of a file, each with no fewer dots than `enough` where it has them.
inline DecodedFile Decode(Bytes file, Dots enough = {.width = 1 << 20, .height = 1 << 20}) {
  DecodedFile decoded;
  const std::unique_ptr<FILE, int (*)(FILE*)> stream(fmemopen(file.data(), file.size(), "rb"),
                                                     &fclose);
  const auto reader = OpenPictureFile(stream.get(), decoded.error);
  if (reader == nullptr) return decoded;
  PictureReader::Next next;
  while ((next = reader->NextPicture()) == PictureReader::Next::kPicture) {
    DecodedPicture picture;
    if (!ReadOn(*reader, enough, picture)) break;
    decoded.pictures.push_back(picture);
  }
  if (next != PictureReader::Next::kEnd) decoded.error = reader->error();
  return decoded;
}

// An Exif block of one entry in the byte order of Intel: a tag with a 16-bit number.
inline Bytes ExifWith(uint16_t tag, uint16_t number) {
  return {'I',
          'I',
          42,
          0,
          8,
          0,
          0,
          0,
          1,
          0,
          static_cast<uint8_t>(tag & 0xFF),
          static_cast<uint8_t>(tag >> 8),
          3,
          0,
          1,
          0,
          0,
          0,
          static_cast<uint8_t>(number & 0xFF),
          static_cast<uint8_t>(number >> 8),
          0,
          0,
          0,
          0,
          0,
          0};
}

constexpr uint16_t kOrientationTag = 0x0112;

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_TEST_PICTURES_H_
