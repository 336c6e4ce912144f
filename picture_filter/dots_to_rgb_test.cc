// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/dots_to_rgb.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include <cstring>
#include <vector>

namespace zr7700 {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes Convert(const DotForm& form, Bytes dots, const Bytes& profile = {}) {
  const DotsToRgb converter(form, profile);
  Bytes rgb(dots.size() / form.Bytes() * 3);
  converter.Convert(dots, rgb);
  return rgb;
}

Bytes Words(const std::vector<uint16_t>& words) {
  Bytes bytes(words.size() * 2);
  std::memcpy(bytes.data(), words.data(), bytes.size());
  return bytes;
}

Bytes Saved(cmsHPROFILE profile) {
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, nullptr, &size);
  Bytes bytes(size);
  cmsSaveProfileToMem(profile, bytes.data(), &size);
  cmsCloseProfile(profile);
  return bytes;
}

// sRGB's primaries, with numbers that are proportional to light.
Bytes LinearRgbProfile() {
  const cmsCIExyY white = {.x = 0.3127, .y = 0.3290, .Y = 1};
  const cmsCIExyYTRIPLE primaries = {.Red = {.x = 0.64, .y = 0.33, .Y = 1},
                                     .Green = {.x = 0.30, .y = 0.60, .Y = 1},
                                     .Blue = {.x = 0.15, .y = 0.06, .Y = 1}};
  cmsToneCurve* const curve = cmsBuildGamma(nullptr, 1);
  cmsToneCurve* const curves[] = {curve, curve, curve};
  const Bytes profile = Saved(cmsCreateRGBProfile(&white, &primaries, curves));
  cmsFreeToneCurve(curve);
  return profile;
}

Bytes LinearGreyProfile() {
  cmsToneCurve* const curve = cmsBuildGamma(nullptr, 1);
  const Bytes profile = Saved(cmsCreateGrayProfile(cmsD50_xyY(), curve));
  cmsFreeToneCurve(curve);
  return profile;
}

TEST(DotsToRgbTest, SrgbStaysAsItIs) {
  EXPECT_EQ(Convert({}, {0, 1, 127, 128, 254, 255}), (Bytes{0, 1, 127, 128, 254, 255}));
}

TEST(DotsToRgbTest, GreyBecomesThreeTimesTheSame) {
  EXPECT_EQ(Convert({.colours = Colours::kGrey}, {7, 200}), (Bytes{7, 7, 7, 200, 200, 200}));
}

// 0x7FFF x 255 / 65535 = 127.498, and 0x80FF 128.496.
TEST(DotsToRgbTest, SixteenBitsAreRounded) {
  EXPECT_EQ(Convert({.is_16_bit = true}, Words({0x7FFF, 0x80FF, 0xFFFF})), (Bytes{127, 128, 255}));
}

// Half red on white: 255 - 255 x 128 / 255 = 127.
TEST(DotsToRgbTest, TransparentDotsLieOnWhite) {
  const DotForm form = {.alpha = Alpha::kStraight};
  EXPECT_EQ(Convert(form, {255, 0, 0, 128}), (Bytes{255, 127, 127}));
  EXPECT_EQ(Convert(form, {9, 8, 7, 0, 9, 8, 7, 255}), (Bytes{255, 255, 255, 9, 8, 7}));
  const DotForm grey = {.colours = Colours::kGrey, .alpha = Alpha::kStraight};
  EXPECT_EQ(Convert(grey, {0, 55}), (Bytes{200, 200, 200}));
}

TEST(DotsToRgbTest, SixteenBitAlpha) {
  const DotForm form = {.alpha = Alpha::kStraight, .is_16_bit = true};
  EXPECT_EQ(Convert(form, Words({65535, 0, 0, 0x8080})), (Bytes{255, 127, 127}));
}

// The same half red, its colours multiplied already.
TEST(DotsToRgbTest, PremultipliedAlpha) {
  EXPECT_EQ(Convert({.alpha = Alpha::kPremultiplied}, {128, 0, 0, 128}), (Bytes{255, 127, 127}));
  // More colour than there is alpha counts as all of it.
  EXPECT_EQ(Convert({.alpha = Alpha::kPremultiplied}, {200, 0, 0, 128, 50, 50, 50, 0}),
            (Bytes{255, 127, 127, 255, 255, 255}));
  const DotForm words = {.alpha = Alpha::kPremultiplied, .is_16_bit = true};
  EXPECT_EQ(Convert(words, Words({0x8080, 0, 0, 0x8080})), (Bytes{255, 127, 127}));
}

// (255 - 51) x (255 - 102) / 255 = 122.4.
TEST(DotsToRgbTest, InksWithoutAProfileFilterLight) {
  const DotForm form = {.colours = Colours::kCmyk};
  EXPECT_EQ(Convert(form, {0, 0, 0, 0, 255, 0, 0, 0}), (Bytes{255, 255, 255, 0, 255, 255}));
  EXPECT_EQ(Convert(form, {0, 0, 0, 255, 51, 0, 0, 102}), (Bytes{0, 0, 0, 122, 153, 153}));
}

// Half the light is 1.055 x 0.502 ^ (1 / 2.4) - 0.055 = 0.7366 in sRGB, 187.8 of 255.
TEST(DotsToRgbTest, AProfileIsFollowed) {
  const Bytes rgb = Convert({}, {128, 128, 128, 255, 255, 255, 0, 0, 0}, LinearRgbProfile());
  for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(rgb[i], 188, 1);
  for (size_t i = 3; i < 6; ++i) EXPECT_EQ(rgb[i], 255);
  for (size_t i = 6; i < 9; ++i) EXPECT_EQ(rgb[i], 0);
  const Bytes grey = Convert({.colours = Colours::kGrey}, {128}, LinearGreyProfile());
  for (const uint8_t value : grey) EXPECT_NEAR(value, 188, 1);
}

TEST(DotsToRgbTest, AProfileWithAlphaAndWords) {
  const DotForm form = {.alpha = Alpha::kStraight, .is_16_bit = true};
  const Bytes rgb =
      Convert(form, Words({32896, 32896, 32896, 65535, 0, 0, 0, 0}), LinearRgbProfile());
  for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(rgb[i], 188, 1);
  for (size_t i = 3; i < 6; ++i) EXPECT_EQ(rgb[i], 255);
}

TEST(DotsToRgbTest, AProfileOfNoUseIsLeftOut) {
  for (const Bytes& profile : {Bytes{1, 2, 3}, LinearGreyProfile()}) {
    EXPECT_TRUE(DotsToRgb({}, profile).lacks_profile());
    EXPECT_EQ(Convert({}, {128, 0, 0}, profile), (Bytes{128, 0, 0}));
  }
  EXPECT_FALSE(DotsToRgb({}, {}).lacks_profile());
  EXPECT_FALSE(DotsToRgb({}, LinearRgbProfile()).lacks_profile());
}

// L* 50 without colour is a grey of sRGB 118.9; 128 stands for none in a* and b*.
TEST(DotsToRgbTest, Lab) {
  const Bytes rgb =
      Convert({.colours = Colours::kLab}, {255, 128, 128, 128, 128, 128, 0, 128, 128});
  for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(rgb[i], 255, 1);
  for (size_t i = 3; i < 6; ++i) EXPECT_NEAR(rgb[i], 119, 2);
  for (size_t i = 6; i < 9; ++i) EXPECT_NEAR(rgb[i], 0, 1);
}

}  // namespace
}  // namespace zr7700
