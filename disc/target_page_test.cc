// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/target_page.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

std::string Choice(const std::string& option, const std::string& keyword,
                   const std::string& code = "") {
  return "*" + option + " " + keyword + ": \"" + code + "\"\n";
}

std::string Option(const std::string& option, const std::string& standard,
                   const std::string& choices) {
  return "*OpenUI *" + option + ": PickOne\n*OrderDependency: 10 AnySetup *" + option +
         "\n*Default" + option + ": " + standard + "\n" + choices + "*CloseUI: *" + option + "\n";
}

std::string Colors(int color_space) {
  return "<</cupsColorOrder 0/cupsColorSpace " + std::to_string(color_space) +
         "/cupsBitsPerColor 8>>setpagedevice";
}

// A square page of 72 points, one beyond any disc, and one that is no square.
std::string Ppd() {
  const std::string sizes = Choice("PageSize", "Inch", "<</PageSize[72 72]>>setpagedevice") +
                            Choice("PageSize", "Huge", "<</PageSize[9000 9000]>>setpagedevice") +
                            Choice("PageSize", "Card", "<</PageSize[72 36]>>setpagedevice");
  return "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*LanguageVersion: English\n"
         "*LanguageEncoding: ISOLatin1\n*PCFileName: \"X.PPD\"\n*Product: \"(X)\"\n"
         "*Manufacturer: \"X\"\n*ModelName: \"X\"\n*NickName: \"X\"\n*ShortNickName: \"X\"\n"
         "*PSVersion: \"(3010.000) 0\"\n*LanguageLevel: \"3\"\n*ColorDevice: True\n" +
         Option("PageSize", "Inch", sizes) +
         "*DefaultImageableArea: Inch\n*ImageableArea Inch: \"0 0 72 72\"\n"
         "*ImageableArea Huge: \"0 0 9000 9000\"\n*ImageableArea Card: \"0 0 72 36\"\n"
         "*DefaultPaperDimension: Inch\n*PaperDimension Card: \"72 36\"\n"
         "*PaperDimension Inch: \"72 72\"\n*PaperDimension Huge: \"9000 9000\"\n" +
         Option("Resolution", "600dpi",
                Choice("Resolution", "600dpi", "<</HWResolution[600 600]>>setpagedevice") +
                    Choice("Resolution", "300dpi", "<</HWResolution[300 300]>>setpagedevice")) +
         Option("ColorModel", "RGB",
                Choice("ColorModel", "RGB", Colors(1)) + Choice("ColorModel", "Gray", Colors(18))) +
         Option("InnerDiameter", "40",
                Choice("InnerDiameter", "40") + Choice("InnerDiameter", "260")) +
         Option("OuterMargin", "10Text",
                Choice("OuterMargin", "10Text") + Choice("OuterMargin", "-10"));
}

class TargetPageTest : public ::testing::Test {
 protected:
  TargetPageTest() { UsePpd(folder_.WriteFile("x.ppd", Ppd())); }
  ~TargetPageTest() override { unsetenv("PPD"); }

  static void UsePpd(const std::string& path) { setenv("PPD", path.c_str(), 1); }

  std::optional<TargetPage> Read(const std::string& text) {
    cups_option_t* options = nullptr;
    const int count = cupsParseOptions(text.c_str(), 0, &options);
    auto page = ReadTargetPage(count, options, error_);
    cupsFreeOptions(count, options);
    return page;
  }

  test::TemporaryFolder folder_;
  std::string error_;
};

TEST_F(TargetPageTest, HasTheChosenPageAndRing) {
  const auto page = Read("");
  ASSERT_TRUE(page);
  EXPECT_EQ(page->header.cupsWidth, 600U);
  EXPECT_EQ(page->header.cupsHeight, 600U);
  EXPECT_EQ(page->header.cupsBytesPerLine, 1800U);
  EXPECT_EQ(page->margin_dots, 23U);       // 10 x 600 / 254
  EXPECT_EQ(page->hole_radius_dots, 47U);  // 40 x 300 / 254
  EXPECT_FALSE(page->grey);
  EXPECT_DOUBLE_EQ(page->Points().width, 72);
}

TEST_F(TargetPageTest, FollowsTheJobsOptions) {
  const auto page = Read("Resolution=300dpi OuterMargin=-10");
  ASSERT_TRUE(page);
  EXPECT_EQ(page->header.cupsWidth, 300U);
  EXPECT_EQ(page->header.HWResolution[0], 300U);
  // A margin below nothing is none.
  EXPECT_EQ(page->margin_dots, 0U);
}

TEST_F(TargetPageTest, IsRgbOfEightBitsEvenForGreys) {
  const auto page = Read("ColorModel=Gray");
  ASSERT_TRUE(page);
  EXPECT_TRUE(page->grey);
  EXPECT_EQ(page->header.cupsColorSpace, CUPS_CSPACE_RGB);
  EXPECT_EQ(page->header.cupsBitsPerPixel, 24U);
  EXPECT_EQ(page->header.cupsNumColors, 3U);
  EXPECT_EQ(page->header.cupsBytesPerLine, 1800U);
}

TEST_F(TargetPageTest, RefusesAHoleThatLeavesNothing) {
  // A radius of 260 x 300 / 254 = 307 dots: 614 of 600.
  EXPECT_FALSE(Read("InnerDiameter=260"));
  EXPECT_EQ(error_,
            "The hole and the margin that were chosen leave nothing of the disc; choose a "
            "smaller InnerDiameter or OuterMargin.");
}

TEST_F(TargetPageTest, RefusesPpdsThatAreNone) {
  unsetenv("PPD");
  EXPECT_FALSE(Read(""));
  EXPECT_NE(error_.find("cannot be read"), std::string::npos);
  UsePpd(folder_.WriteFile("rubbish.ppd", "rubbish"));
  EXPECT_FALSE(Read(""));
  EXPECT_NE(error_.find("cannot be read"), std::string::npos);
}

TEST_F(TargetPageTest, RefusesPagesThatAreNoDiscs) {
  for (const char* const page : {"PageSize=Huge", "PageSize=Card"}) {
    error_.clear();
    EXPECT_FALSE(Read(page));
    EXPECT_NE(error_.find("not that of a ZR7700"), std::string::npos) << page;
  }
}

}  // namespace
}  // namespace zr7700
