// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/png_reader.h"

#include <gtest/gtest.h>
#include <png.h>

#include <functional>

#include "picture_filter/test_pictures.h"

namespace zr7700 {
namespace {

struct PngForm {
  uint32_t width = 2;
  uint32_t height = 1;
  int bits = 8;
  int type = PNG_COLOR_TYPE_RGB;
  int interlace = PNG_INTERLACE_NONE;
};

void Append(png_structp png, png_bytep bytes, size_t count) {
  auto& file = *static_cast<Bytes*>(png_get_io_ptr(png));
  file.insert(file.end(), bytes, bytes + count);
}

using Chunks = std::function<void(png_structp, png_infop)>;

// `lines` are as PNG has them, one after another; `chunks` sets what stands before them.
Bytes PngFile(const PngForm& form, Bytes lines, const Chunks& chunks = {}) {
  Bytes file;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(png, &file, Append, nullptr);
  png_set_IHDR(png, info, form.width, form.height, form.bits, form.type, form.interlace,
               PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
  if (chunks) chunks(png, info);
  png_write_info(png, info);
  std::vector<png_bytep> rows;
  for (uint32_t y = 0; y < form.height; ++y) {
    rows.push_back(lines.data() + lines.size() / form.height * y);
  }
  png_write_image(png, rows.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return file;
}

void SetPalette(png_structp png, png_infop info) {
  const png_color colours[] = {{255, 0, 0}, {0, 0, 255}};
  const png_byte alphas[] = {128};
  png_set_PLTE(png, info, colours, 2);
  png_set_tRNS(png, info, alphas, 1, nullptr);
}

DecodedPicture DecodeOne(const Bytes& file) {
  const DecodedFile decoded = Decode(file);
  EXPECT_EQ(decoded.error, "");
  EXPECT_EQ(decoded.pictures.size(), 1U);
  return decoded.pictures.empty() ? DecodedPicture{.rgb = Bytes(100)} : decoded.pictures[0];
}

TEST(PngReaderTest, RgbOf8And16Bits) {
  const DecodedPicture picture = DecodeOne(PngFile({}, {255, 0, 0, 0, 255, 0}));
  EXPECT_EQ(picture.At(0, 0), kRed);
  EXPECT_EQ(picture.At(1, 0), kGreen);
  // 0x8080 is 128 of 255, whatever the machine's byte order is.
  const DecodedPicture wide =
      DecodeOne(PngFile({.width = 1, .bits = 16}, {0x80, 0x80, 0x01, 0x01, 0xFF, 0xFF}));
  EXPECT_EQ(wide.At(0, 0), (Rgb{128, 1, 255}));
}

TEST(PngReaderTest, HalfTransparent) {
  const DecodedPicture picture =
      DecodeOne(PngFile({.type = PNG_COLOR_TYPE_RGB_ALPHA}, {255, 0, 0, 128, 0, 0, 0, 0}));
  EXPECT_EQ(picture.At(0, 0), (Rgb{255, 127, 127}));
  EXPECT_EQ(picture.At(1, 0), kWhite);
  const DecodedPicture grey =
      DecodeOne(PngFile({.type = PNG_COLOR_TYPE_GRAY_ALPHA}, {0, 128, 0, 255}));
  EXPECT_EQ(grey.At(0, 0), (Rgb{127, 127, 127}));
  EXPECT_EQ(grey.At(1, 0), kBlack);
}

TEST(PngReaderTest, PaletteWithTransparency) {
  const PngForm form = {.bits = 1, .type = PNG_COLOR_TYPE_PALETTE};
  const DecodedPicture picture = DecodeOne(PngFile(form, {0x40}, SetPalette));
  EXPECT_EQ(picture.At(0, 0), (Rgb{255, 127, 127}));
  EXPECT_EQ(picture.At(1, 0), kBlue);
}

// 0 1 2 3 of 3 in 2 bits each: 0, 85, 170, 255.
TEST(PngReaderTest, GreyOfFewBits) {
  const PngForm form = {.width = 4, .bits = 2, .type = PNG_COLOR_TYPE_GRAY};
  const DecodedPicture picture = DecodeOne(PngFile(form, {0x1B}));
  EXPECT_EQ(picture.rgb, (Bytes{0, 0, 0, 85, 85, 85, 170, 170, 170, 255, 255, 255}));
}

TEST(PngReaderTest, InterlacedIsTheSame) {
  Bytes lines;
  for (int i = 0; i < 9 * 11 * 3; ++i) lines.push_back(static_cast<uint8_t>(i * 7));
  const DecodedPicture picture =
      DecodeOne(PngFile({.width = 9, .height = 11, .interlace = PNG_INTERLACE_ADAM7}, lines));
  EXPECT_EQ(picture.rgb, lines);
}

// 11811 dots a metre are 300 an inch.
TEST(PngReaderTest, Density) {
  const auto with = [](int across, int down, int unit) {
    return PngFile({}, Bytes(6), [=](png_structp png, png_infop info) {
      png_set_pHYs(png, info, static_cast<png_uint_32>(across), static_cast<png_uint_32>(down),
                   unit);
    });
  };
  const Density metric = DecodeOne(with(11811, 5906, PNG_RESOLUTION_METER)).told.density;
  EXPECT_NEAR(metric.across, 300, 0.01);
  EXPECT_NEAR(metric.down, 150, 0.02);
  const Density shape = DecodeOne(with(1, 2, PNG_RESOLUTION_UNKNOWN)).told.density;
  EXPECT_EQ(shape.across, 200);
  EXPECT_EQ(shape.down, 400);
  EXPECT_EQ(DecodeOne(PngFile({}, Bytes(6))).told.density.across, 200);
}

TEST(PngReaderTest, ExifTurns) {
  const Bytes file = PngFile({}, Bytes(6), [](png_structp png, png_infop info) {
    Bytes exif = ExifWith(kOrientationTag, 6);
    png_set_eXIf_1(png, info, static_cast<png_uint_32>(exif.size()), exif.data());
  });
  EXPECT_EQ(DecodeOne(file).told.turn, TurnOfOrientation(6));
}

TEST(PngReaderTest, ExifBehindThePictureTurnsToo) {
  Bytes file = PngFile({}, Bytes(6));
  const Bytes exif = ExifWith(kOrientationTag, 8);
  Bytes chunk = {0, 0, 0, static_cast<uint8_t>(exif.size()), 'e', 'X', 'I', 'f'};
  chunk.insert(chunk.end(), exif.begin(), exif.end());
  chunk.insert(chunk.end(), 4, 0);  // a wrong checksum, which libpng passes over
  file.insert(file.end() - 12, chunk.begin(), chunk.end());
  EXPECT_EQ(DecodeOne(file).told.turn, TurnOfOrientation(8));
}

// Numbers that are proportional to light: half of it is 188 of 255 in sRGB, to a power of 2.2 186.
TEST(PngReaderTest, GammaIsFollowedAndThatOfSrgbIsNone) {
  const auto with = [](double gamma) {
    return PngFile({}, Bytes(6, 128),
                   [=](png_structp png, png_infop info) { png_set_gAMA(png, info, gamma); });
  };
  EXPECT_NEAR(DecodeOne(with(1.0)).At(0, 0)[0], 186, 2);
  EXPECT_EQ(DecodeOne(with(0.45455)).At(0, 0)[0], 128);
}

// No cut leaves a picture, except that of the end mark's checksum.
TEST(PngReaderTest, CutFilesAreRefused) {
  Bytes file = PngFile({.width = 20, .height = 20}, Bytes(1200, 77));
  for (size_t bytes = file.size() - 9; bytes > 0; --bytes) {
    const DecodedFile cut = Decode(Bytes(file.begin(), file.begin() + static_cast<long>(bytes)));
    EXPECT_TRUE(cut.pictures.empty()) << bytes;
    EXPECT_NE(cut.error, "") << bytes;
  }
}

TEST(PngReaderTest, AWrongChecksumIsDamage) {
  Bytes file = PngFile({.width = 20, .height = 20}, Bytes(1200, 77));
  file[file.size() - 13] ^= 1;  // the last of the picture's data
  const DecodedFile decoded = Decode(file);
  EXPECT_TRUE(decoded.pictures.empty());
  EXPECT_NE(decoded.error.find("damaged"), std::string::npos) << decoded.error;
}

// The header's numbers with a checksum of their own would need one here: libpng checks them first.
TEST(PngReaderTest, HugePicturesAreRefusedByTheirHeader) {
  PngForm form = {.width = 60000, .height = 1, .bits = 1, .type = PNG_COLOR_TYPE_GRAY};
  EXPECT_EQ(Decode(PngFile(form, Bytes(7500))).error, "");
  form = {.width = 60000, .height = 5000, .bits = 1, .type = PNG_COLOR_TYPE_GRAY};
  const std::string error = Decode(PngFile(form, Bytes(size_t{7500} * 5000))).error;
  EXPECT_NE(error.find("60000 x 5000"), std::string::npos) << error;
}

}  // namespace
}  // namespace zr7700
