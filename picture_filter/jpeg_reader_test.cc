// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/jpeg_reader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
//
#include <jpeglib.h>

#include "picture_filter/test_pictures.h"

namespace zr7700 {
namespace {

struct JpegForm {
  uint32_t width = 16;
  uint32_t height = 16;
  J_COLOR_SPACE dots = JCS_RGB;
  J_COLOR_SPACE stored = JCS_YCbCr;
  bool has_adobe_marker = false;
  bool is_progressive = false;
  std::vector<jpeg_scan_info> scans = {};
  uint8_t density_unit = 0;
  uint16_t density_across = 1;
  uint16_t density_down = 1;
  Bytes exif = {};
};

// A picture of one colour in the best quality.
Bytes JpegFile(const JpegForm& form, const Bytes& dot) {
  jpeg_compress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* bytes = nullptr;
  unsigned long count = 0;
  jpeg_mem_dest(&jpeg, &bytes, &count);
  jpeg.image_width = form.width;
  jpeg.image_height = form.height;
  jpeg.input_components = static_cast<int>(dot.size());
  jpeg.in_color_space = form.dots;
  jpeg_set_defaults(&jpeg);
  jpeg_set_colorspace(&jpeg, form.stored);
  jpeg_set_quality(&jpeg, 100, TRUE);
  jpeg.write_Adobe_marker = form.has_adobe_marker ? TRUE : FALSE;
  jpeg.density_unit = form.density_unit;
  jpeg.X_density = form.density_across;
  jpeg.Y_density = form.density_down;
  if (form.is_progressive) jpeg_simple_progression(&jpeg);
  if (!form.scans.empty()) {
    jpeg.scan_info = form.scans.data();
    jpeg.num_scans = static_cast<int>(form.scans.size());
  }
  jpeg_start_compress(&jpeg, TRUE);
  if (!form.exif.empty()) {
    jpeg_write_marker(&jpeg, JPEG_APP0 + 1, form.exif.data(),
                      static_cast<unsigned>(form.exif.size()));
  }
  Bytes line;
  for (uint32_t x = 0; x < form.width; ++x) line.insert(line.end(), dot.begin(), dot.end());
  JSAMPROW row = line.data();
  while (jpeg.next_scanline < jpeg.image_height) jpeg_write_scanlines(&jpeg, &row, 1);
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  const Bytes file(bytes, bytes + count);
  std::free(bytes);
  return file;
}

DecodedPicture DecodeOne(const Bytes& file, Dots enough = {.width = 65535, .height = 65535}) {
  const DecodedFile decoded = Decode(file, enough);
  EXPECT_EQ(decoded.error, "");
  EXPECT_EQ(decoded.pictures.size(), 1U);
  return decoded.pictures.empty() ? DecodedPicture{.rgb = Bytes(768)} : decoded.pictures[0];
}

void ExpectNear(const Rgb& dot, const Rgb& expected) {
  for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(dot[i], expected[i], 2) << i;
}

Bytes Exif(uint16_t tag, uint16_t number) {
  Bytes exif = {'E', 'x', 'i', 'f', 0, 0};
  for (const uint8_t byte : ExifWith(tag, number)) exif.push_back(byte);
  return exif;
}

TEST(JpegReaderTest, ColoursAndGrey) {
  ExpectNear(DecodeOne(JpegFile({}, {255, 0, 0})).At(5, 5), kRed);
  const JpegForm grey = {.dots = JCS_GRAYSCALE, .stored = JCS_GRAYSCALE};
  ExpectNear(DecodeOne(JpegFile(grey, {100})).At(5, 5), {100, 100, 100});
}

// With Adobe's marker 255 is no ink; without one it is all of it.
TEST(JpegReaderTest, Inks) {
  JpegForm form = {.dots = JCS_CMYK, .stored = JCS_CMYK, .has_adobe_marker = true};
  ExpectNear(DecodeOne(JpegFile(form, {0, 255, 255, 255})).At(5, 5), {0, 255, 255});
  form.has_adobe_marker = false;
  ExpectNear(DecodeOne(JpegFile(form, {255, 0, 0, 0})).At(5, 5), {0, 255, 255});
  form = {.dots = JCS_CMYK, .stored = JCS_YCCK, .has_adobe_marker = true};
  ExpectNear(DecodeOne(JpegFile(form, {0, 255, 255, 255})).At(5, 5), {0, 255, 255});
}

TEST(JpegReaderTest, ProgressiveIsTheSame) {
  ExpectNear(DecodeOne(JpegFile({.is_progressive = true}, {10, 200, 30})).At(5, 5), {10, 200, 30});
}

TEST(JpegReaderTest, NoMoreThanTwiceTheDotsNeeded) {
  const Bytes file = JpegFile({.width = 801, .height = 400}, {0, 0, 255});
  const auto width_for = [&](uint32_t width, uint32_t height) {
    return DecodeOne(file, {.width = width, .height = height}).dots.width;
  };
  EXPECT_EQ(width_for(801, 400), 801U);
  EXPECT_EQ(width_for(401, 100), 801U);
  EXPECT_EQ(width_for(400, 200), 401U);
  EXPECT_EQ(width_for(400, 201), 801U);
  EXPECT_EQ(width_for(200, 100), 201U);
  EXPECT_EQ(width_for(100, 50), 101U);
  EXPECT_EQ(width_for(1, 1), 101U);
  ExpectNear(DecodeOne(file, {.width = 100, .height = 50}).At(50, 25), kBlue);
}

TEST(JpegReaderTest, Density) {
  const auto density = [](uint8_t unit, uint16_t across, uint16_t down) {
    return DecodeOne(
               JpegFile({.density_unit = unit, .density_across = across, .density_down = down},
                        {1, 2, 3}))
        .told.density;
  };
  EXPECT_EQ(density(1, 300, 150).across, 300);
  EXPECT_EQ(density(1, 300, 150).down, 150);
  EXPECT_NEAR(density(2, 100, 100).across, 254, 0.001);
  EXPECT_EQ(density(0, 1, 1).across, 200);
  EXPECT_EQ(density(0, 1, 2).down, 400);
}

TEST(JpegReaderTest, ExifTurns) {
  const Bytes file = JpegFile({.exif = Exif(kOrientationTag, 5)}, {1, 2, 3});
  EXPECT_EQ(DecodeOne(file).told.turn, TurnOfOrientation(5));
  // Another application's block of the same marker is none.
  const Bytes other = JpegFile({.exif = {'h', 't', 't', 'p', ':', '/', '/', 0}}, {1, 2, 3});
  EXPECT_EQ(DecodeOne(other).told.turn, Turn{});
}

TEST(JpegReaderTest, CutFilesAreRefused) {
  for (const bool is_progressive : {false, true}) {
    const Bytes file = JpegFile({.is_progressive = is_progressive}, {200, 100, 50});
    for (size_t bytes = file.size() - 2; bytes > 0; --bytes) {
      const DecodedFile cut = Decode(Bytes(file.begin(), file.begin() + static_cast<long>(bytes)));
      EXPECT_TRUE(cut.pictures.empty()) << bytes;
      EXPECT_NE(cut.error, "") << bytes;
    }
  }
}

// A scan for each of a grey block's 64 numbers, and another for the last bit of each.
TEST(JpegReaderTest, ScansWithoutEndAreRefused) {
  JpegForm form = {.dots = JCS_GRAYSCALE, .stored = JCS_GRAYSCALE};
  for (const int done : {0, 1}) {
    for (int i = 0; i < 64; ++i) form.scans.push_back({1, {0}, i, i, done, 1 - done});
  }
  const std::string error = Decode(JpegFile(form, {100})).error;
  EXPECT_NE(error.find("too many scans"), std::string::npos) << error;
  form.scans.resize(90);
  ExpectNear(DecodeOne(JpegFile(form, {100})).At(5, 5), {100, 100, 100});
}

// Bytes that a camera leaves before the end mark are no damage.
TEST(JpegReaderTest, BytesBeforeTheEndAreHarmless) {
  Bytes file = JpegFile({}, {255, 0, 0});
  file.insert(file.end() - 2, 10, 0);
  ExpectNear(DecodeOne(file).At(5, 5), kRed);
}

// The size stands behind the start-of-frame mark FF C0, its length and the precision.
TEST(JpegReaderTest, HugePicturesAreRefusedByTheirHeader) {
  Bytes file = JpegFile({}, {255, 0, 0});
  for (size_t i = 0; i + 9 < file.size(); ++i) {
    if (file[i] != 0xFF || file[i + 1] != 0xC0) continue;
    file[i + 5] = file[i + 7] = 60000 >> 8;
    file[i + 6] = file[i + 8] = 60000 & 0xFF;
  }
  const std::string error = Decode(file).error;
  EXPECT_NE(error.find("60000 x 60000"), std::string::npos) << error;
}

// 12000 x 12000 samples of 3 colours and 16 bits are 864 million bytes.
TEST(JpegReaderTest, ProgressiveOnesAreHeldAndSoLimited) {
  Bytes file = JpegFile({.is_progressive = true}, {255, 0, 0});
  for (size_t i = 0; i + 11 < file.size(); ++i) {
    if (file[i] != 0xFF || file[i + 1] != 0xC2) continue;
    file[i + 5] = file[i + 7] = 12000 >> 8;
    file[i + 6] = file[i + 8] = 12000 & 0xFF;
    file[i + 11] = 0x11;  // no subsampling
  }
  const std::string error = Decode(file).error;
  EXPECT_NE(error.find("progressive"), std::string::npos) << error;
}

}  // namespace
}  // namespace zr7700
