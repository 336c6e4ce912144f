// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "page_fitter/page_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zr7700 {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class CheckPageTest : public ::testing::Test {
 protected:
  CheckPageTest() {
    header_.cupsColorSpace = CUPS_CSPACE_RGB;
    header_.cupsBitsPerColor = 8;
    header_.cupsBitsPerPixel = 24;
    SetSize(100, 200);
    SetResolution(600, 600);
  }

  void SetSize(unsigned width, unsigned height) {
    header_.cupsWidth = width;
    header_.cupsHeight = height;
    header_.cupsBytesPerLine = width * 3;
  }
  void SetResolution(unsigned across, unsigned down) {
    header_.HWResolution[0] = across;
    header_.HWResolution[1] = down;
  }

  cups_page_header2_t header_ = {};
};

TEST_F(CheckPageTest, TakesOrdinaryPages) {
  EXPECT_THAT(CheckPage(header_), IsEmpty());
  header_.cupsBytesPerLine = 304;  // padded
  EXPECT_THAT(CheckPage(header_), IsEmpty());
}

TEST_F(CheckPageTest, NamesColoursThatItDoesNotTake) {
  header_.cupsColorSpace = CUPS_CSPACE_CMYK;
  header_.cupsBitsPerPixel = 32;
  EXPECT_THAT(CheckPage(header_), HasSubstr("(colour space 6, 32 bits a dot)"));
}

TEST_F(CheckPageTest, NamesSizesThatNoDiscNeeds) {
  SetSize(131072, 2288);  // 299,892,736 dots
  EXPECT_THAT(CheckPage(header_), IsEmpty());
  SetSize(131072, 2289);
  EXPECT_THAT(CheckPage(header_), HasSubstr("131072 x 2289"));
  for (const auto& [width, height] :
       {std::pair(131073U, 1U), {0U, 5U}, {5U, 0U}, {9U, 4000000000U}}) {
    SetSize(width, height);
    EXPECT_THAT(CheckPage(header_), HasSubstr("which no disc needs"));
  }
}

TEST_F(CheckPageTest, NamesResolutionsThatAreNone) {
  SetResolution(19200, 1);
  EXPECT_THAT(CheckPage(header_), IsEmpty());
  SetResolution(0, 600);
  EXPECT_THAT(CheckPage(header_), HasSubstr("0 x 600 dots an inch"));
  SetResolution(600, 19201);
  EXPECT_THAT(CheckPage(header_), HasSubstr("600 x 19201 dots an inch"));
}

TEST_F(CheckPageTest, RefusesLinesThatDoNotFitTheirWidth) {
  header_.cupsBytesPerLine = 299;
  EXPECT_THAT(CheckPage(header_), HasSubstr("lines"));
  header_.cupsBytesPerLine = 4000000000;
  EXPECT_THAT(CheckPage(header_), HasSubstr("lines"));
}

TEST_F(CheckPageTest, RefusesMoreCopiesThanAnyJobMayHave) {
  header_.NumCopies = 9999;
  EXPECT_THAT(CheckPage(header_), IsEmpty());
  header_.NumCopies = 10000;
  EXPECT_THAT(CheckPage(header_), HasSubstr("10000 copies"));
}

}  // namespace
}  // namespace zr7700
