// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/tiff_reader.h"

#include <gtest/gtest.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>

#include "picture_filter/test_pictures.h"

namespace zr7700 {
namespace {

struct TiffPage {
  uint32_t width = 2;
  uint32_t height = 1;
  uint16_t bits = 8;
  uint16_t samples = 3;
  uint16_t photometric = PHOTOMETRIC_RGB;
  uint16_t planar = PLANARCONFIG_CONTIG;
  uint16_t compression = COMPRESSION_NONE;
  uint32_t tile_side = 0;  // 0 for strips of one line
  Bytes bytes = {};        // of all lines, or of the whole tiles
  std::function<void(TIFF*)> more_tags = [](TIFF*) {};
};

void WritePage(TIFF* tiff, const TiffPage& page) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, page.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, page.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, page.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, page.samples);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, page.photometric);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, page.planar);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, page.compression);
  page.more_tags(tiff);
  if (page.tile_side > 0) {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, page.tile_side);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, page.tile_side);
  } else {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 1);
  }
  Bytes bytes = page.bytes;
  const uint32_t parts = page.tile_side > 0 ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
  const auto part_bytes = static_cast<tmsize_t>(bytes.size() / parts);
  for (uint32_t part = 0; part < parts; ++part) {
    uint8_t* const from = bytes.data() + static_cast<tmsize_t>(part) * part_bytes;
    page.tile_side > 0 ? TIFFWriteEncodedTile(tiff, part, from, part_bytes)
                       : TIFFWriteEncodedStrip(tiff, part, from, part_bytes);
  }
  TIFFWriteDirectory(tiff);
}

Bytes TiffFileWith(const std::vector<TiffPage>& pages, const char* mode = "w") {
  std::string path = testing::TempDir() + "zr7700-tiff-XXXXXX";
  close(mkstemp(path.data()));
  TIFF* const tiff = TIFFOpen(path.c_str(), mode);
  for (const TiffPage& page : pages) WritePage(tiff, page);
  TIFFClose(tiff);
  std::ifstream file(path, std::ios::binary);
  const Bytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  unlink(path.c_str());
  return bytes;
}

DecodedPicture DecodeOne(const TiffPage& page, const char* mode = "w") {
  const DecodedFile decoded = Decode(TiffFileWith({page}, mode));
  EXPECT_EQ(decoded.error, "");
  EXPECT_EQ(decoded.pictures.size(), 1U);
  return decoded.pictures.empty() ? DecodedPicture{.rgb = Bytes(3000)} : decoded.pictures[0];
}

// Words in the machine's byte order, which is what libtiff takes.
Bytes Words(const std::vector<uint16_t>& words) {
  Bytes bytes(words.size() * 2);
  std::memcpy(bytes.data(), words.data(), bytes.size());
  return bytes;
}

std::function<void(TIFF*)> ExtraSample(uint16_t kind) {
  return [kind](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind); };
}

void ExpectNear(const Rgb& dot, const Rgb& expected, int error) {
  for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(dot[i], expected[i], error) << i;
}

TEST(TiffReaderTest, RgbOf8And16Bits) {
  EXPECT_EQ(DecodeOne({.bytes = {255, 0, 0, 0, 0, 255}}).rgb, (Bytes{255, 0, 0, 0, 0, 255}));
  const TiffPage wide = {.width = 1, .bits = 16, .bytes = Words({0x8080, 0, 0xFFFF})};
  EXPECT_EQ(DecodeOne(wide).At(0, 0), (Rgb{128, 0, 255}));
  EXPECT_EQ(DecodeOne(wide, "wb").At(0, 0), (Rgb{128, 0, 255}));  // the other byte order
  EXPECT_EQ(DecodeOne(wide, "w8").At(0, 0), (Rgb{128, 0, 255}));  // BigTIFF
}

TEST(TiffReaderTest, EveryCompressionIsTheSame) {
  Bytes dots;
  for (int i = 0; i < 40 * 10 * 3; ++i) dots.push_back(static_cast<uint8_t>(i / 5));
  for (const int compression : {COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_PACKBITS}) {
    const TiffPage page = {.width = 40,
                           .height = 10,
                           .compression = static_cast<uint16_t>(compression),
                           .bytes = dots};
    EXPECT_EQ(DecodeOne(page).rgb, dots) << compression;
  }
}

// Bits 1 0 1 in the upper end of a byte.
TEST(TiffReaderTest, GreyOfFewBits) {
  TiffPage page = {
      .width = 3, .bits = 1, .samples = 1, .photometric = PHOTOMETRIC_MINISBLACK, .bytes = {0xA0}};
  EXPECT_EQ(DecodeOne(page).rgb, (Bytes{255, 255, 255, 0, 0, 0, 255, 255, 255}));
  page.photometric = PHOTOMETRIC_MINISWHITE;
  EXPECT_EQ(DecodeOne(page).rgb, (Bytes{0, 0, 0, 255, 255, 255, 0, 0, 0}));
  page.bits = 4;
  page.bytes = {0x0F, 0x50};
  EXPECT_EQ(DecodeOne(page).rgb, (Bytes{255, 255, 255, 0, 0, 0, 170, 170, 170}));
  page = {.width = 1,
          .bits = 16,
          .samples = 1,
          .photometric = PHOTOMETRIC_MINISWHITE,
          .bytes = Words({0x8080})};
  EXPECT_EQ(DecodeOne(page).At(0, 0), (Rgb{127, 127, 127}));
}

TEST(TiffReaderTest, Palette) {
  for (const unsigned whole : {65535U, 255U}) {
    std::array<uint16_t, 16> red = {0, static_cast<uint16_t>(whole)};
    std::array<uint16_t, 16> green = {};
    std::array<uint16_t, 16> blue = {static_cast<uint16_t>(whole)};
    const TiffPage page = {.bits = 4,
                           .samples = 1,
                           .photometric = PHOTOMETRIC_PALETTE,
                           .bytes = {0x01},
                           .more_tags = [&](TIFF* tiff) {
                             TIFFSetField(tiff, TIFFTAG_COLORMAP, red.data(), green.data(),
                                          blue.data());
                           }};
    EXPECT_EQ(DecodeOne(page).At(0, 0), kBlue) << whole;
    EXPECT_EQ(DecodeOne(page).At(1, 0), kRed) << whole;
  }
}

TEST(TiffReaderTest, Inks) {
  const TiffPage page = {
      .samples = 4, .photometric = PHOTOMETRIC_SEPARATED, .bytes = {255, 0, 0, 0, 0, 0, 0, 255}};
  EXPECT_EQ(DecodeOne(page).rgb, (Bytes{0, 255, 255, 0, 0, 0}));
}

// a* and b* are signed here: 0 is no colour.
TEST(TiffReaderTest, Lab) {
  TiffPage page = {.photometric = PHOTOMETRIC_CIELAB, .bytes = {255, 0, 0, 128, 0, 0}};
  ExpectNear(DecodeOne(page).At(0, 0), kWhite, 1);
  ExpectNear(DecodeOne(page).At(1, 0), {119, 119, 119}, 2);
  page.bits = 16;
  page.bytes = Words({65535, 0, 0, 32768, 0, 0});
  ExpectNear(DecodeOne(page).At(0, 0), kWhite, 1);
  ExpectNear(DecodeOne(page).At(1, 0), {119, 119, 119}, 2);
}

TEST(TiffReaderTest, Transparency) {
  TiffPage page = {.width = 1,
                   .samples = 4,
                   .bytes = {255, 0, 0, 128},
                   .more_tags = ExtraSample(EXTRASAMPLE_UNASSALPHA)};
  EXPECT_EQ(DecodeOne(page).At(0, 0), (Rgb{255, 127, 127}));
  page.bytes = {128, 0, 0, 128};
  page.more_tags = ExtraSample(EXTRASAMPLE_ASSOCALPHA);
  EXPECT_EQ(DecodeOne(page).At(0, 0), (Rgb{255, 127, 127}));
  page.more_tags = ExtraSample(EXTRASAMPLE_UNSPECIFIED);
  EXPECT_EQ(DecodeOne(page).At(0, 0), (Rgb{128, 0, 0}));
  page = {.width = 1,
          .samples = 2,
          .photometric = PHOTOMETRIC_MINISBLACK,
          .bytes = {0, 128},
          .more_tags = ExtraSample(EXTRASAMPLE_UNASSALPHA)};
  EXPECT_EQ(DecodeOne(page).At(0, 0), (Rgb{127, 127, 127}));
}

// Two lines of two dots; all reds, then all greens, then all blues.
TEST(TiffReaderTest, Planes) {
  const TiffPage page = {.height = 2,
                         .planar = PLANARCONFIG_SEPARATE,
                         .bytes = {1, 2, 3, 4, 11, 12, 13, 14, 21, 22, 23, 24}};
  EXPECT_EQ(DecodeOne(page).rgb, (Bytes{1, 11, 21, 2, 12, 22, 3, 13, 23, 4, 14, 24}));
}

// 20 x 18 dots in four tiles of 16 x 16, of which only the first is full. Dot (x, y) is 16 y + x
// within its tile.
TEST(TiffReaderTest, Tiles) {
  Bytes tile;
  for (int i = 0; i < 256; ++i) tile.push_back(static_cast<uint8_t>(i));
  TiffPage page = {.width = 20,
                   .height = 18,
                   .samples = 1,
                   .photometric = PHOTOMETRIC_MINISBLACK,
                   .tile_side = 16};
  for (int i = 0; i < 4; ++i) page.bytes.insert(page.bytes.end(), tile.begin(), tile.end());
  const DecodedPicture picture = DecodeOne(page);
  EXPECT_EQ(picture.At(15, 15)[0], 255);
  EXPECT_EQ(picture.At(16, 0)[0], 0);
  EXPECT_EQ(picture.At(19, 5)[0], 83);
  EXPECT_EQ(picture.At(3, 17)[0], 19);
  EXPECT_EQ(picture.At(19, 17)[0], 19);
}

// Y 76, Cb 85, Cr 255 are red; without subsampling and without JPEG.
TEST(TiffReaderTest, LuminanceAndDifferences) {
  const TiffPage page = {.photometric = PHOTOMETRIC_YCBCR,
                         .compression = COMPRESSION_LZW,
                         .bytes = {76, 85, 255, 255, 128, 128},
                         .more_tags = [](TIFF* tiff) {
                           TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, 1, 1);
                           TIFFSetField(tiff, TIFFTAG_REFERENCEBLACKWHITE,
                                        std::array<float, 6>{0, 255, 128, 255, 128, 255}.data());
                         }};
  ExpectNear(DecodeOne(page).At(0, 0), kRed, 2);
  ExpectNear(DecodeOne(page).At(1, 0), kWhite, 2);
}

TEST(TiffReaderTest, DensityAndOrientation) {
  TiffPage page = {.bytes = Bytes(6)};
  EXPECT_EQ(DecodeOne(page).told.density.across, 200);
  page.more_tags = [](TIFF* tiff) {
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 100.0);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 50.0);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_CENTIMETER);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_RIGHTTOP);
  };
  const Picture told = DecodeOne(page).told;
  EXPECT_NEAR(told.density.across, 254, 0.001);
  EXPECT_NEAR(told.density.down, 127, 0.001);
  EXPECT_EQ(told.turn, TurnOfOrientation(6));
}

TEST(TiffReaderTest, AnOrientationThatMeansNothingIsNone) {
  TiffPage page = {.bytes = Bytes(6)};
  page.more_tags = [](TIFF* tiff) {
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_RIGHTTOP);
  };
  auto file = TiffFileWith({page});
  // The tag's entry: number 0x0112, type 3, one value, 6.
  const std::string entry("\x12\x01\x03\x00\x01\x00\x00\x00\x06\x00", 10);
  const auto place = std::search(file.begin(), file.end(), entry.begin(), entry.end());
  ASSERT_NE(place, file.end());
  for (const uint8_t value : {uint8_t{0}, uint8_t{9}}) {
    place[8] = value;
    const DecodedFile decoded = Decode(file);
    EXPECT_EQ(decoded.error, "");
    ASSERT_EQ(decoded.pictures.size(), 1U);
    EXPECT_EQ(decoded.pictures[0].told.turn, TurnOfOrientation(1));
  }
}

std::function<void(TIFF*)> Kind(uint32_t kind) {
  return [kind](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, kind); };
}

TEST(TiffReaderTest, PagesWithoutPreviewsAndMasks) {
  const TiffPage red = {.width = 1, .bytes = {255, 0, 0}, .more_tags = Kind(0)};
  const TiffPage blue = {.width = 1, .bytes = {0, 0, 255}, .more_tags = Kind(FILETYPE_PAGE)};
  const TiffPage preview = {
      .width = 1, .bytes = {9, 9, 9}, .more_tags = Kind(FILETYPE_REDUCEDIMAGE)};
  const TiffPage mask = {.width = 1, .bytes = {8, 8, 8}, .more_tags = Kind(FILETYPE_MASK)};
  const DecodedFile file = Decode(TiffFileWith({preview, red, mask, blue, preview}));
  EXPECT_EQ(file.error, "");
  ASSERT_EQ(file.pictures.size(), 2U);
  EXPECT_EQ(file.pictures[0].At(0, 0), kRed);
  EXPECT_EQ(file.pictures[1].At(0, 0), kBlue);
  EXPECT_EQ(DecodeOne(preview).At(0, 0), (Rgb{9, 9, 9}));
}

// Where the first directory begins, and in it, behind two bytes of count and twelve for each entry,
// where the next one does: here at the first again.
TEST(TiffReaderTest, ALoopOfPagesIsDamage) {
  Bytes file = TiffFileWith({{.bytes = Bytes(6)}});
  const size_t first = file[4] + file[5] * 256U;
  const size_t next = first + 2 + file[first] * 12U;
  std::copy_n(file.begin() + 4, 4, file.begin() + static_cast<long>(next));
  const DecodedFile decoded = Decode(file);
  EXPECT_EQ(decoded.pictures.size(), 1U);
  EXPECT_NE(decoded.error.find("damaged"), std::string::npos) << decoded.error;
}

TEST(TiffReaderTest, CutFilesAreRefused) {
  const Bytes file = TiffFileWith(
      {{.width = 20, .height = 20, .compression = COMPRESSION_LZW, .bytes = Bytes(1200, 77)}});
  for (size_t bytes = file.size() - 1; bytes > 0; --bytes) {
    const DecodedFile cut = Decode(Bytes(file.begin(), file.begin() + static_cast<long>(bytes)));
    EXPECT_TRUE(cut.pictures.empty()) << bytes;
    EXPECT_NE(cut.error, "") << bytes;
  }
}

TEST(TiffReaderTest, UnknownKindsAreRefused) {
  const TiffPage reals = {.width = 1, .bits = 32, .bytes = Bytes(12), .more_tags = [](TIFF* tiff) {
                            TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP);
                          }};
  const std::string error = Decode(TiffFileWith({reals})).error;
  EXPECT_NE(error.find("3 samples of 32 bits"), std::string::npos) << error;
}

// The entry of the compression: its tag, type 3, one value, and that value.
TEST(TiffReaderTest, UnknownCompressionsAreRefused) {
  Bytes file = TiffFileWith({{.bytes = Bytes(6)}});
  const Bytes entry = {3, 1, 3, 0, 1, 0, 0, 0, 1, 0};
  const auto found = std::search(file.begin(), file.end(), entry.begin(), entry.end());
  ASSERT_NE(found, file.end());
  found[8] = 34712 & 0xFF;  // JPEG 2000
  found[9] = 34712 >> 8;
  const std::string error = Decode(file).error;
  EXPECT_NE(error.find("34712"), std::string::npos) << error;
}

TEST(TiffReaderTest, HugePicturesAreRefusedByTheirHeader) {
  const TiffPage page = {.width = 60000,
                         .height = 60000,
                         .bits = 1,
                         .samples = 1,
                         .photometric = PHOTOMETRIC_MINISBLACK,
                         .compression = COMPRESSION_ADOBE_DEFLATE,
                         .bytes = Bytes(60000, 1)};
  const std::string error = Decode(TiffFileWith({page})).error;
  EXPECT_NE(error.find("60000 x 60000"), std::string::npos) << error;
}

}  // namespace
}  // namespace zr7700
