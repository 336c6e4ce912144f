// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/clip_geometry.h"

#include <chrono>
#include <cmath>
#include <map>

#include "tests/support/job_test.h"

namespace zr7700 {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class ClipGeometryTest : public test::JobTest {
 protected:
  ClipGeometryTest() {
    variables_.discForm = 1;
    variables_.maxImageDots = 5100;
  }

  // The image and, `margin` dots inside it, the printable rectangle, as page start computes them.
  void SetPage(uint32_t width, uint32_t height, uint32_t margin) {
    variables_.imageWidth = width;
    variables_.imageHeight = height;
    variables_.OuterMargin = margin;
    variables_.leftOutputImage = margin;
    variables_.rightOutputImage = width - margin;
    variables_.topOutputImage = static_cast<uint16_t>(margin);
    variables_.bottomOutputImage = static_cast<uint16_t>(height - margin);
  }

  bool Fill() { return ClipGetData(variables_, table_); }

  // What is logged of a refusal at that threshold.
  std::vector<std::string> RefusalAt(int threshold) {
    const test::LogCapture log(threshold);
    EXPECT_FALSE(Fill());
    return log.Lines();
  }

  void ExpectAllZero() {
    for (size_t line = 0; line < table_.size(); ++line) {
      ASSERT_EQ(table_[line].outer, 0) << line;
      ASSERT_EQ(table_[line].inner, 0) << line;
    }
  }

  JobVariables variables_ = {};
  std::vector<ClipEntry> table_ = std::vector<ClipEntry>(5100, ClipEntry{9, 9});
};

// A second way to the table: entries in a map that takes any line, cut to the table at the end.
struct Drawing {
  std::map<uint64_t, uint16_t> outer;
  std::map<uint64_t, uint16_t> inner;

  void Disc(uint16_t first, uint64_t od, uint16_t cap) {
    const double d = static_cast<double>(od * od / 4);
    const double h = static_cast<double>(od / 2);
    for (uint64_t step = 0; od > 1 + 2 * step; ++step) {
      const double t = static_cast<double>((od - 1 - 2 * step) / 2);
      const double v = std::sqrt((d - (0.00343396 * h) * h) * (1.0 - t * t / d));
      const auto line = static_cast<uint16_t>(first + step);
      outer[line] = std::min(static_cast<uint16_t>(v), cap);
    }
  }

  void Hole(uint16_t height, uint64_t nid2) {
    const auto beside = static_cast<uint16_t>(height - nid2);
    const auto first = static_cast<uint16_t>(beside / 2 + beside % 2);
    for (uint64_t step = 0; nid2 > 2 * step; ++step) {
      const uint64_t a = nid2 - 2 * step;
      const auto root = static_cast<uint16_t>(std::sqrt(static_cast<double>(nid2 * nid2 - a * a)));
      inner[static_cast<uint16_t>(first + step)] = root / 2;
    }
  }

  void Mirror(uint64_t height, size_t table_lines) {
    for (uint64_t e = 0; 2 * e < height && e < table_lines; ++e) {
      outer[height - 1 - e] = outer[e];
      inner[height - 1 - e] = inner[e];
    }
  }

  void ExpectEqual(const std::vector<ClipEntry>& table) {
    for (size_t line = 0; line < table.size(); ++line) {
      ASSERT_EQ(table[line].outer, outer[line]) << "line " << line;
      ASSERT_EQ(table[line].inner, inner[line]) << "line " << line;
    }
  }
};

TEST_F(ClipGeometryTest, RoundDiscOfAThousandDots) {
  SetPage(1000, 1000, 0);
  ASSERT_TRUE(Fill());
  EXPECT_EQ(table_[0].outer, 31);
  EXPECT_EQ(table_[499].outer, 499);
  EXPECT_EQ(table_[500].outer, 499);
  EXPECT_EQ(table_[999].outer, 31);
  EXPECT_EQ(table_[1000].outer, 0);
}

TEST_F(ClipGeometryTest, UsualDiscWithItsHole) {
  SetPage(2834, 2834, 7);
  variables_.InnerDiam = 150;  // 45000 / 254 = 177, a diameter of 354
  ASSERT_TRUE(Fill());
  EXPECT_EQ(table_[6].outer, 0);
  EXPECT_EQ(table_[7].outer, 53);       // 0.99656604 x (1410² - 1409²) = 2809.3
  EXPECT_EQ(table_[1416].outer, 1407);  // 1410 x 0.998281... = 1407.5
  EXPECT_EQ(table_[1417].outer, 1407);
  EXPECT_EQ(table_[2826].outer, 53);
  EXPECT_EQ(table_[2827].outer, 0);
  EXPECT_EQ(table_[1239].inner, 0);
  EXPECT_EQ(table_[1240].inner, 0);    // (2834 - 354) / 2: the hole begins with nothing
  EXPECT_EQ(table_[1241].inner, 18);   // 354² - 352² = 1412, its root 37, half of it
  EXPECT_EQ(table_[1416].inner, 176);  // 354² - 2² = 125312, its root 353
  EXPECT_EQ(table_[1417].inner, 176);
  EXPECT_EQ(table_[1592].inner, 18);
  EXPECT_EQ(table_[1593].inner, 0);
}

TEST_F(ClipGeometryTest, RoundDiscsOfManySizesEqualASecondComputation) {
  for (const uint32_t side : {1u, 2u, 3u, 4u, 5u, 67u, 800u, 2833u, 2834u, 5099u, 5100u}) {
    for (const uint32_t margin : {0u, 1u, 7u}) {
      if (side < 2 * margin) continue;
      SCOPED_TRACE(testing::Message() << side << " dots, margin " << margin);
      variables_.InnerDiam = side / 10;
      SetPage(side, side, margin);
      const uint64_t nid2 = 2 * (variables_.InnerDiam * 300 / 254);
      ASSERT_EQ(Fill(), side - 2 * margin >= nid2);
      if (side - 2 * margin < nid2) continue;
      Drawing drawing;
      if (side > 2 * margin) {
        drawing.Disc(static_cast<uint16_t>(margin), side - 2 * margin, UINT16_MAX);
        drawing.Hole(static_cast<uint16_t>(side), nid2);
        drawing.Mirror(side, table_.size());
      }
      drawing.ExpectEqual(table_);
    }
  }
}

TEST_F(ClipGeometryTest, EveryFormWithoutAnOutlineOfItsOwnIsRound) {
  SetPage(1000, 1000, 0);
  for (const uint32_t form : {0u, 1u, 2u, 3u, 6u}) {
    variables_.discForm = form;
    ASSERT_TRUE(Fill());
    EXPECT_EQ(table_[0].outer, 31) << form;
    EXPECT_EQ(table_[499].outer, 499) << form;
  }
}

TEST_F(ClipGeometryTest, DiameterIsTheLargerSideOfTheRectangle) {
  SetPage(600, 1000, 0);
  ASSERT_TRUE(Fill());
  EXPECT_EQ(table_[499].outer, 499);
  SetPage(1000, 600, 0);
  ASSERT_TRUE(Fill());
  // Line 299 of the disc of 1000: t = 200, 0.99656604 x (250000 - 40000) = 209278.9.
  EXPECT_EQ(table_[299].outer, 457);
  // The mirror takes line 0 to line 599 over what the disc's own lines had there.
  EXPECT_EQ(table_[599].outer, 31);
}

TEST_F(ClipGeometryTest, CappedFormIsNoWiderThanTheRectangle) {
  variables_.discForm = 5;
  SetPage(600, 1000, 0);
  ASSERT_TRUE(Fill());
  EXPECT_EQ(table_[0].outer, 31);
  EXPECT_EQ(table_[499].outer, 300);
  EXPECT_EQ(table_[999].outer, 31);
  Drawing drawing;
  drawing.Disc(0, 1000, 300);
  drawing.Mirror(1000, table_.size());
  drawing.ExpectEqual(table_);
}

TEST_F(ClipGeometryTest, BusinessCardHasRoundedCornersAndStraightSides) {
  variables_.discForm = OEM_FORM_BUSINESS_CD;
  SetPage(2000, 2001, 150);
  variables_.imageWidth = 2010;  // 2010 / 2 - 150 = 855, so that the sides differ from the corner
  ASSERT_TRUE(Fill());
  EXPECT_EQ(table_[149].outer, 0);
  EXPECT_EQ(table_[150].outer, 779);  // 850 - 71
  EXPECT_EQ(table_[151].outer, 791);  // root of 20164 - 140² is 23: 850 - (119 >> 1)
  EXPECT_EQ(table_[220].outer, 850);  // root of 20164 - 2² is 141: 850 - (1 >> 1)
  EXPECT_EQ(table_[221].outer, 855);
  EXPECT_EQ(table_[1000].outer, 855);  // up to and with the middle line
  EXPECT_EQ(table_[1850].outer, 779);
  EXPECT_EQ(table_[1851].outer, 0);
  EXPECT_THAT(LogLines(), ElementsAre("     ClipGetData: nID = 0 (in 300dpi units))\n",
                                      "     ClipGetData: wImageWidth = 1700, wImageHeight = 1701\n",
                                      "     ClipGetData: setting initial wIndex to 150",
                                      "     ClipGetData: Clipping for OEM_FORM_BUSINESS_CD"));
}

TEST_F(ClipGeometryTest, BusinessCardCornersAreWrittenOnACardTooLowForThem) {
  variables_.discForm = OEM_FORM_BUSINESS_CD;
  SetPage(1700, 40, 0);
  ASSERT_TRUE(Fill());
  EXPECT_EQ(table_[0].outer, 779);
  EXPECT_EQ(table_[39].outer, 779);  // mirrored
  EXPECT_EQ(table_[70].outer, 850);  // below the image: never read, never mirrored
  EXPECT_EQ(table_[71].outer, 0);
}

TEST_F(ClipGeometryTest, NarrowCardsCornerWrapsIn16Bits) {
  variables_.discForm = OEM_FORM_BUSINESS_CD;
  SetPage(100, 400, 0);
  ASSERT_TRUE(Fill());
  EXPECT_EQ(table_[0].outer, 65515);  // 50 - 71
  EXPECT_EQ(table_[70].outer, 50);
}

TEST_F(ClipGeometryTest, OddHeightMirrorsTheMiddleLineOntoItself) {
  SetPage(5, 5, 0);
  ASSERT_TRUE(Fill());
  // d = 6, h = 2: at t = 2 the root of 5.986... x 2/6 is 1; at t = 1 that of 5.986... x 5/6 is 2.
  EXPECT_EQ(table_[0].outer, 1);
  EXPECT_EQ(table_[1].outer, 2);
  EXPECT_EQ(table_[2].outer, 0);
  EXPECT_EQ(table_[3].outer, 2);
  EXPECT_EQ(table_[4].outer, 1);
  EXPECT_EQ(table_[5].outer, 0);
}

TEST_F(ClipGeometryTest, EmptyRectangleWithoutAHoleLeavesTheTableZero) {
  SetPage(1000, 1000, 500);
  EXPECT_TRUE(Fill());
  ExpectAllZero();
  EXPECT_THAT(LogLines(), ElementsAre("     ClipGetData: nID = 0 (in 300dpi units))\n",
                                      "     ClipGetData: wImageWidth = 0, wImageHeight = 0\n"));
}

TEST_F(ClipGeometryTest, RefusalLeavesTheTableZero) {
  SetPage(5101, 100, 0);
  EXPECT_FALSE(Fill());
  ExpectAllZero();
  EXPECT_THAT(LogLines(), ElementsAre("     ClipGetData: nID = 0 (in 300dpi units))\n",
                                      "     ClipGetData: wImageWidth = 5101, wImageHeight = 100\n",
                                      "Invalid Dimension wOd: 5101, Pline 5100",
                                      "ClipGetData:  returning (FALSE)"));
}

TEST_F(ClipGeometryTest, NegativeMarginBeginsAboveTheImage) {
  SetPage(2834, 2834, static_cast<uint32_t>(-7));
  ASSERT_TRUE(Fill());
  EXPECT_THAT(LogLines(), Contains("     ClipGetData: wImageWidth = 2848, wImageHeight = 2848\n"));
  EXPECT_THAT(LogLines(), Contains("     ClipGetData: setting initial wIndex to 65529"));
  // Seven lines lie above the table, the eighth is line 0: t = 1416, 0.99656604 x 22720 = 22641.9.
  EXPECT_EQ(table_[0].outer, 150);
  EXPECT_EQ(table_[2833].outer, 150);
  EXPECT_EQ(table_[1416].outer, 1421);  // 1424 x 0.998281... = 1421.5
  EXPECT_EQ(table_[2834].outer, 0);
}

TEST_F(ClipGeometryTest, LinesOutsideTheTableAreDropped) {
  table_.resize(100);
  SetPage(1000, 1000, 0);
  variables_.InnerDiam = 254;
  ASSERT_TRUE(Fill());
  Drawing drawing;
  drawing.Disc(0, 1000, UINT16_MAX);
  drawing.ExpectEqual(table_);
  std::vector<ClipEntry> none;
  EXPECT_TRUE(ClipGetData(variables_, none));
}

TEST_F(ClipGeometryTest, TallPageMirrorsIntoTheTableOnlyWhatItHolds) {
  SetPage(5000, 9000, 0);
  variables_.maxImageDots = 9000;
  variables_.InnerDiam = 2540;  // a diameter of 6000 in lines 1500 to 4499
  ASSERT_TRUE(Fill());
  Drawing drawing;
  drawing.Disc(0, 9000, UINT16_MAX);
  drawing.Hole(9000, 6000);
  drawing.Mirror(9000, table_.size());
  drawing.ExpectEqual(table_);
  EXPECT_EQ(table_[4499].outer, table_[4500].outer);
}

TEST_F(ClipGeometryTest, HoleTallerThanTheImageBeginsFarBelowIt) {
  SetPage(1000, 100, 0);
  variables_.InnerDiam = 254;
  ASSERT_TRUE(Fill());  // 100 - 600 is 65036 in 16 bits: line 32518
  for (const ClipEntry& entry : table_) ASSERT_EQ(entry.inner, 0);
}

TEST_F(ClipGeometryTest, OddSpaceBesideTheHoleIsRoundedUp) {
  SetPage(1000, 1001, 0);
  variables_.InnerDiam = 254;
  ASSERT_TRUE(Fill());
  // (1001 - 600 + 1) / 2 = 201: line 202 is the first that the hole reaches, 600² - 598² = 2396.
  EXPECT_EQ(table_[201].inner, 0);
  EXPECT_EQ(table_[202].inner, 24);
}

TEST_F(ClipGeometryTest, OnlyTheLow16BitsOfTheHoleCount) {
  SetPage(1000, 1000, 0);
  variables_.InnerDiam = 0x12340000 + 254;
  ASSERT_TRUE(Fill());
  EXPECT_THAT(LogLines(), Contains("     ClipGetData: nID = 300 (in 300dpi units))\n"));
  EXPECT_EQ(table_[499].inner, 299);  // root of 600² - 2² is 599
}

TEST_F(ClipGeometryTest, HugeHeightsEndInBoundedTime) {
  const auto start = std::chrono::steady_clock::now();
  for (const uint32_t form : {1u, 4u, 5u}) {
    for (const uint32_t height : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
      variables_.discForm = form;
      SetPage(2834, 2834, 7);
      variables_.imageHeight = height;
      EXPECT_TRUE(Fill()) << height;
    }
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(ClipGeometryTest, OutlineAtEveryLevel) {
  variables_.discForm = OEM_FORM_BUSINESS_CD;
  SetPage(2000, 2001, 150);
  for (const int threshold : {1, 2, 3, 4}) {
    const test::LogCapture log(threshold);
    EXPECT_TRUE(Fill());
    if (threshold < 3) {
      EXPECT_THAT(log.Lines(), ElementsAre("     ClipGetData: nID = 0 (in 300dpi units))\n"));
    } else {
      EXPECT_THAT(log.Lines(),
                  ElementsAre("     ClipGetData: nID = 0 (in 300dpi units))\n",
                              "     ClipGetData: wImageWidth = 1700, wImageHeight = 1701\n",
                              "     ClipGetData: setting initial wIndex to 150",
                              "     ClipGetData: Clipping for OEM_FORM_BUSINESS_CD"));
    }
  }
}

TEST_F(ClipGeometryTest, RefusalAtEveryLevel) {
  SetPage(5101, 100, 0);
  std::vector<std::string> expected = {"     ClipGetData: nID = 0 (in 300dpi units))\n"};
  EXPECT_EQ(RefusalAt(1), expected);
  expected.emplace_back("Invalid Dimension wOd: 5101, Pline 5100");
  EXPECT_EQ(RefusalAt(2), expected);
  expected.insert(expected.begin() + 1,
                  "     ClipGetData: wImageWidth = 5101, wImageHeight = 100\n");
  expected.emplace_back("ClipGetData:  returning (FALSE)");
  EXPECT_EQ(RefusalAt(3), expected);
  EXPECT_EQ(RefusalAt(4), expected);
}

TEST_F(ClipGeometryTest, CardsWidthIsHalvedWithItsSign) {
  variables_.discForm = OEM_FORM_BUSINESS_CD;
  SetPage(2000, 2001, 150);
  // 2003 - 2^31 halved toward zero is 1002 - 2^30, the low 16 bits of which are 1002.
  variables_.imageWidth = 0x80000000u + 2003;
  ASSERT_TRUE(Fill());
  EXPECT_EQ(table_[220].outer, 850);
  EXPECT_EQ(table_[221].outer, 852);
}

TEST_F(ClipGeometryTest, CardOfNegativeHeightHasNoStraightSides) {
  variables_.discForm = OEM_FORM_BUSINESS_CD;
  SetPage(1700, 2001, 150);
  variables_.imageHeight = 0x7FFFFFFF;
  ASSERT_TRUE(Fill());
  EXPECT_EQ(table_[221].outer, 700);
  EXPECT_EQ(table_[5099].outer, 700);
  for (const uint32_t height : {0x80000000u, 0xFFFFFFFFu}) {
    variables_.imageHeight = height;
    ASSERT_TRUE(Fill());
    EXPECT_EQ(table_[220].outer, 700) << height;
    EXPECT_EQ(table_[221].outer, 0) << height;
    EXPECT_EQ(table_[5099].outer, 0) << height;
  }
}

TEST_F(ClipGeometryTest, HolesRadiusIsLoggedWholeWhileItsDiameterKeeps16Bits) {
  variables_.maxImageDots = 20000;
  variables_.InnerDiam = 60000;  // x 300 / 254 is 70866; twice that, less 2 x 65536, is 10660
  SetPage(12000, 12000, 0);
  ASSERT_TRUE(Fill());
  EXPECT_THAT(LogLines(), Contains("     ClipGetData: nID = 70866 (in 300dpi units))\n"));
  EXPECT_EQ(table_[670].inner, 0);      // (12000 - 10660) / 2
  EXPECT_EQ(table_[671].inner, 103);    // 10660² - 10658² = 42636, its root 206
  EXPECT_EQ(table_[4670].inner, 5161);  // 10660² - 2660² = 106560000, its root 10322
  SetPage(10660, 10660, 0);
  EXPECT_TRUE(Fill());
  SetPage(10659, 10659, 0);
  EXPECT_FALSE(Fill());
}

}  // namespace
}  // namespace zr7700
