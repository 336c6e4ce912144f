// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/page.h"

#include <cstring>
#include <limits>

#include "engine/engine_entries.h"
#include "engine/engine_output.h"
#include "engine/job_variables.h"
#include "tests/support/job_test.h"
#include "tests/support/recorded_engine.h"
#include "tests/support/stream_capture.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr char kCreateFailed[] = "   Unable to create ClipDataBufs!";

class PageTest : public test::JobTest {
 protected:
  PageTest() {
    engineHandle = engine_.handle();
    JobVariables& v = job_variables;
    v.ColorMatching = 2;
    v.DiscSurfaceQuality = 5;
    v.PrintQuality = 4;
    v.InkSaturation = 90;
    v.topDiscOffset = -31;
    v.OuterMargin = 600;
    v.InnerDiam = 150;
    v.discForm = 1;
    v.clipBufferBytes = 20400;
    v.maxImageDots = 5100;
    v.nPhotoThreshold = 700;
    v.nRunCompValue = 0xFFFFFFFF;
    v.nRunCompDiv = 3000;
    v.ImageSharpeningValue = 11;
    v.inkLimitLow = 190000000;
    v.statusLetterReady = 1;
    v.bidirectional = 1;
    v.files.engineIniPath = ini_path_.c_str();
    header_.HWResolution[0] = 600;
    header_.HWResolution[1] = 601;
    header_.cupsWidth = 2834;
    header_.cupsHeight = 2835;
    header_.cupsBitsPerPixel = 24;
    header_.cupsBitsPerColor = 8;
    header_.cupsColorOrder = CUPS_ORDER_CHUNKED;
    header_.cupsColorSpace = CUPS_CSPACE_RGB;
    header_.cupsBytesPerLine = 8502;
    header_.cupsPageSize[0] = 340.9F;
    header_.cupsPageSize[1] = 341.1F;
    strcpy(header_.cupsPageSizeName, "CDDVD120");
  }

  // Starts the page and keeps what went to standard output.
  bool Start() {
    test::StdoutCapture output;
    const bool started = StartPage(header_);
    output_ = output.Take();
    return started;
  }

  // What is logged of a page's start at that threshold.
  std::vector<std::string> LinesAt(int threshold) {
    const test::LogCapture log(threshold);
    EXPECT_TRUE(Start());
    return log.Lines();
  }

  // The last that is logged of a refused page at threshold 1.
  std::string LastLineAtOne() {
    const test::LogCapture log(1);
    EXPECT_FALSE(Start());
    return log.Lines().back();
  }

  void ExpectRefusedFormat(const std::string& line) {
    log_.Clear();
    EXPECT_FALSE(Start());
    const std::vector<std::string> lines = LogLines();
    ASSERT_EQ(lines.size(), 26u);
    EXPECT_EQ(lines[25], line);
    EXPECT_EQ(output_, "");
    EXPECT_THAT(engine_.calls(), IsEmpty());
    EXPECT_EQ(job_variables.clipDataBufs, nullptr);
  }

  test::TemporaryFolder folder_;
  const std::string ini_path_ = folder_.WriteFile("engine.ini", "");
  test::RecordedEngine engine_;
  cups_page_header2_t header_ = {};
  std::string output_;
};

std::string PointerText(const void* pointer) {
  char text[32];
  snprintf(text, sizeof text, "%p", pointer);
  return text;
}

TEST_F(PageTest, GeometryComesFromTheHeader) {
  ASSERT_TRUE(Start());
  EXPECT_EQ(job_variables.horzResolution, 600u);
  EXPECT_EQ(job_variables.vertResolution, 601u);
  EXPECT_EQ(job_variables.imageWidth, 2834u);
  EXPECT_EQ(job_variables.imageHeight, 2835u);
  EXPECT_EQ(job_variables.bottomOutputImage, 2235);
  EXPECT_EQ(job_variables.topOutputImage, 600);
  EXPECT_EQ(job_variables.leftOutputImage, 600u);
  EXPECT_EQ(job_variables.rightOutputImage, 2234u);
  EXPECT_EQ(job_variables.pageHeight, 2835u);
  EXPECT_EQ(job_variables.pageWidth, 2834u);
}

TEST_F(PageTest, GeometryIsKeptToItsWidths) {
  job_variables.OuterMargin = 0xFFFF0000 - 7;
  header_.cupsWidth = 100;
  header_.cupsHeight = 70000;
  Start();
  EXPECT_EQ(job_variables.topOutputImage, 0xFFF9);
  EXPECT_EQ(job_variables.bottomOutputImage, 4471);  // 70007 + 65536 modulo 65536
  EXPECT_EQ(job_variables.leftOutputImage, 0xFFFEFFF9u);
  EXPECT_EQ(job_variables.rightOutputImage, 65643u);  // 100 + 65543
}

TEST_F(PageTest, EveryLogLineInOrder) {
  ASSERT_TRUE(Start());
  const std::vector<std::string> lines = LogLines();
  const std::string engine = PointerText(engine_.handle());
  ASSERT_EQ(lines.size(), 31u + 21u + 4u);  // before, of and after the properties
  EXPECT_THAT(
      std::vector<std::string>(lines.begin(), lines.begin() + 32),
      ElementsAre(
          "START_PAGE", "-------  Job Variables  -------\n", "   ColorMatching: 2",
          "   DiscSurfaceQuality: 5", "   PrintQuality: 4", "   topDiscOffset: -31",
          "   OuterMargin: 600", "   InnerDiam: 150", "   bottomOutputImage: 2235",
          "   topOutputImage: 600", "   leftOutputImage: 600", "   rightOutputImage: 2234",
          "   InkSaturation: 90", "   Page Size 2834, 2835", "   Cups Page Size CDDVD120",
          "   Cups Page Size 340, 341", "   Resolution H: 600, V: 601", "   cupsBitsPerPixel 24",
          "   cupsBitsPerColor 8", "   cupsColorOrder 0", "   cupsBytesPerLine 8502",
          "   nPhotoThreshold 700", "   nRunCompValue 4294967295", "   nRunCompDiv 3000",
          "   ImageSharpeningValue 11", "     ClipGetData: nID = 177 (in 300dpi units))\n",
          "     ClipGetData: wImageWidth = 1634, wImageHeight = 1635\n",
          "     ClipGetData: setting initial wIndex to 600", "     Color Ink Warning: 09e8c610",
          "     Print HEADER written", "   ### SetHPEProperties Called",
          "   SetHPEProperties: Printing with the following FERRO settings"));
  EXPECT_THAT(std::vector<std::string>(lines.end() - 4, lines.end()),
              ElementsAre("   ### SetHPEProperties Passed", "   ### HPEStartPage Called",
                          "   ### HPEStartPage Passsed " + engine + " 0x0", "START_PAGE_END"));
}

TEST_F(PageTest, NegativeAndHugeNumbersInTheDump) {
  job_variables.OuterMargin = static_cast<uint32_t>(-7);
  job_variables.InnerDiam = 0x80000000;
  job_variables.ImageSharpeningValue = -1;
  header_.cupsBytesPerLine = 0xFFFFFFFF;
  Start();
  EXPECT_THAT(LogLines(), Contains("   OuterMargin: -7"));
  EXPECT_THAT(LogLines(), Contains("   leftOutputImage: -7"));
  EXPECT_THAT(LogLines(), Contains("   topOutputImage: 65529"));
  EXPECT_THAT(LogLines(), Contains("   InnerDiam: -2147483648"));
  EXPECT_THAT(LogLines(), Contains("   ImageSharpeningValue 4294967295"));
  EXPECT_THAT(LogLines(), Contains("   cupsBytesPerLine 4294967295"));
}

TEST_F(PageTest, UnterminatedPageSizeNameEndsAt64Bytes) {
  memset(header_.cupsPageSizeName, 'n', sizeof header_.cupsPageSizeName);
  ASSERT_EQ(sizeof header_.cupsPageSizeName, 64u);
  EXPECT_TRUE(Start());
  EXPECT_THAT(LogLines(), Contains("   Cups Page Size " + std::string(64, 'n')));
}

TEST_F(PageTest, AJobsTextCannotBeginALine) {
  strcpy(header_.cupsPageSizeName, "120\r\n2024-01-01 00:00:00 +0000 forged");
  EXPECT_TRUE(Start());
  EXPECT_THAT(LogLines(), Contains("   Cups Page Size 120??2024-01-01 00:00:00 +0000 forged"));
}

// Whole points of 32 bits, shown without a sign.
TEST_F(PageTest, PageSizesOfEitherSignAreWholePoints) {
  header_.cupsPageSize[0] = -2147483648.0F;
  header_.cupsPageSize[1] = -7.9F;
  EXPECT_TRUE(Start());
  EXPECT_THAT(LogLines(), Contains("   Cups Page Size 2147483648, 4294967289"));
}

TEST_F(PageTest, PageSizeThatIsNoNumberHarmsNothing) {
  header_.cupsPageSize[0] = std::numeric_limits<float>::quiet_NaN();
  header_.cupsPageSize[1] = std::numeric_limits<float>::infinity();
  EXPECT_TRUE(Start());
}

TEST_F(PageTest, FormatChecksInOrder) {
  header_.cupsBitsPerColor = 4;
  header_.cupsColorOrder = CUPS_ORDER_PLANAR;
  header_.cupsColorSpace = CUPS_CSPACE_CMYK;
  header_.HWResolution[0] = 0;
  ExpectRefusedFormat("   Bad cupsBitsPerColor=4!");
  header_.cupsBitsPerColor = 16;
  ExpectRefusedFormat("   Bad cupsColorOrder=2!");
  header_.cupsColorOrder = CUPS_ORDER_CHUNKED;
  ExpectRefusedFormat("   Bad cupsColorSpace=6!");
  header_.cupsColorSpace = CUPS_CSPACE_W;
  ExpectRefusedFormat("   Bad HWResolution=0!");
  header_.HWResolution[0] = 600;
  EXPECT_TRUE(Start());
}

TEST_F(PageTest, EachFormatByItsOwn) {
  for (const unsigned bits : {0u, 1u, 2u, 4u, 7u, 9u, 15u, 17u, 0xFFFFFFFFu}) {
    header_.cupsBitsPerColor = bits;
    ExpectRefusedFormat("   Bad cupsBitsPerColor=" + std::to_string(bits) + "!");
  }
  header_.cupsBitsPerColor = 8;
  header_.cupsColorOrder = CUPS_ORDER_BANDED;
  ExpectRefusedFormat("   Bad cupsColorOrder=1!");
  header_.cupsColorOrder = CUPS_ORDER_CHUNKED;
  header_.cupsColorSpace = CUPS_CSPACE_RGBA;
  ExpectRefusedFormat("   Bad cupsColorSpace=2!");
}

TEST_F(PageTest, BitsPerPixelAreNotCheckedHere) {
  header_.cupsBitsPerPixel = 0;
  header_.cupsBytesPerLine = 0;
  EXPECT_TRUE(Start());
}

TEST_F(PageTest, WithoutAClipTableNothingIsWritten) {
  job_variables.discForm = 7;
  EXPECT_FALSE(Start());
  EXPECT_EQ(output_, "");
  EXPECT_THAT(engine_.calls(), IsEmpty());
  EXPECT_EQ(LogLines().back(), kCreateFailed);
}

TEST_F(PageTest, PrintHeaderGoesOutBeforeAnythingOfTheEngine) {
  engine_.During("HPEStartPage", [] {
    uint8_t block[] = {'e', 'n', 'g', 'i', 'n', 'e'};
    WriteEngineOutput(nullptr, block, sizeof block);
  });
  ASSERT_TRUE(Start());
  EXPECT_EQ(output_,
            std::string("\x1B\x0B\x0E\1\1\1\x09\xE8\xC6\x10\0\0\0\0\0\xFE", 16) + "engine");
}

TEST_F(PageTest, PrintHeaderIsNoFeedCommand) {
  // An ink warning that reads as the beginning of one, at bytes 6 to 9 of the header.
  job_variables.FeedAdjust = 1;
  job_variables.SkipLowInkFWCheck = 1;
  job_variables.inkLimitHigh = 0x1B2A0766;
  ASSERT_TRUE(Start());
  EXPECT_EQ(output_.substr(6, 8), std::string("\x1B*\x07\x66\0\0\0\0", 8));
}

TEST_F(PageTest, RefusedPropertiesEndThePageAfterThePrintHeader) {
  engine_.Answer("SetPaperTray", 5);
  EXPECT_FALSE(Start());
  EXPECT_EQ(output_.size(), 16u);
  EXPECT_EQ(LogLines().back(), "   ### SetHPEProperties Failed");
  EXPECT_THAT(engine_.calls(), Not(Contains("HPEStartPage(engine)")));
  EXPECT_NE(job_variables.clipDataBufs, nullptr);
}

TEST_F(PageTest, RefusedPageIsLoggedWithHandleAndStatus) {
  engine_.Answer("HPEStartPage", -1);
  EXPECT_FALSE(Start());
  EXPECT_EQ(output_.size(), 16u);
  EXPECT_EQ(LogLines().back(),
            "   ### HPEStartPage Failed " + PointerText(engine_.handle()) + " 0xffffffff");
}

TEST_F(PageTest, MissingPageEntryIsStatusTwo) {
  engine_entries.HPEStartPage.Set(nullptr);
  EXPECT_FALSE(Start());
  EXPECT_EQ(LogLines().back(),
            "   ### HPEStartPage Failed " + PointerText(engine_.handle()) + " 0x2");
}

TEST_F(PageTest, PropertiesComeBeforeThePage) {
  ASSERT_TRUE(Start());
  ASSERT_EQ(engine_.calls().size(), 24u);
  EXPECT_EQ(engine_.calls().front(), "SetInputResolution(engine, 0, 600)");
  EXPECT_EQ(engine_.calls().back(), "HPEStartPage(engine)");
}

TEST_F(PageTest, EndOfAPage) {
  EXPECT_TRUE(EndPage());
  EXPECT_THAT(engine_.calls(), ElementsAre("HPEEndPage(engine, 0)"));
  EXPECT_THAT(LogLines(), ElementsAre("END_PAGE", "   ### HPEEndPage", "END_PAGE_END"));
}

TEST_F(PageTest, FailedEndOfAPageIsOnlyLogged) {
  engine_.Answer("HPEEndPage", 0x1F);
  EXPECT_TRUE(EndPage());
  EXPECT_THAT(LogLines(), ElementsAre("END_PAGE", "   ### HPEEndPage", "   HPEEndPage Failed 0x1f",
                                      "END_PAGE_END"));
}

// The job variables and what is told of the header and the engine; 19 lines of the properties stand
// between the two.
TEST_F(PageTest, DetailsAreWrittenWithoutTheMilestones) {
  const std::string engine = PointerText(engine_.handle());
  for (const int threshold : {1, 2}) {
    const std::vector<std::string> lines = LinesAt(threshold);
    ASSERT_EQ(lines.size(), 16u + 19u + 3u) << threshold;
    EXPECT_THAT(
        std::vector<std::string>(lines.begin(), lines.begin() + 17),
        ElementsAre("-------  Job Variables  -------\n", "   ColorMatching: 2",
                    "   DiscSurfaceQuality: 5", "   PrintQuality: 4", "   topDiscOffset: -31",
                    "   OuterMargin: 600", "   InnerDiam: 150", "   bottomOutputImage: 2235",
                    "   topOutputImage: 600", "   leftOutputImage: 600",
                    "   rightOutputImage: 2234", "   InkSaturation: 90",
                    "     ClipGetData: nID = 177 (in 300dpi units))\n",
                    "     Color Ink Warning: 09e8c610", "     Print HEADER written",
                    "   ### SetHPEProperties Called", "     Setting print direction to BIDI"));
    EXPECT_THAT(std::vector<std::string>(lines.end() - 3, lines.end()),
                ElementsAre("   ### SetHPEProperties Passed", "   ### HPEStartPage Called",
                            "   ### HPEStartPage Passsed " + engine + " 0x0"));
  }
}

TEST_F(PageTest, MilestonesAreAllElseButTheTraceOfTheMargin) {
  std::vector<std::string> expected = LinesAt(5);
  EXPECT_EQ(std::erase(expected, "     In ripGetMarginWidth"), 1u);
  EXPECT_EQ(expected.size(), 55u);
  EXPECT_EQ(LinesAt(3), expected);
  EXPECT_EQ(LinesAt(4), expected);
}

TEST_F(PageTest, WhyAPageIsRefusedIsADetail) {
  engine_.Answer("HPEStartPage", 7);
  EXPECT_EQ(LastLineAtOne(),
            "   ### HPEStartPage Failed " + PointerText(engine_.handle()) + " 0x7");
  engine_.Answer("SetPaperTray", 5);
  EXPECT_EQ(LastLineAtOne(), "   ### SetHPEProperties Failed");
  job_variables.maxImageDots = 0;
  EXPECT_EQ(LastLineAtOne(), kCreateFailed);
  header_.HWResolution[0] = 0;
  EXPECT_EQ(LastLineAtOne(), "   Bad HWResolution=0!");
  header_.cupsColorSpace = CUPS_CSPACE_CMYK;
  EXPECT_EQ(LastLineAtOne(), "   Bad cupsColorSpace=6!");
  header_.cupsColorOrder = CUPS_ORDER_PLANAR;
  EXPECT_EQ(LastLineAtOne(), "   Bad cupsColorOrder=2!");
  header_.cupsBitsPerColor = 4;
  EXPECT_EQ(LastLineAtOne(), "   Bad cupsBitsPerColor=4!");
}

TEST_F(PageTest, EndOfAPageAtEveryLevel) {
  engine_.Answer("HPEEndPage", 0x1F);
  for (const int threshold : {1, 2, 3, 4}) {
    const test::LogCapture log(threshold);
    EXPECT_TRUE(EndPage());
    if (threshold < 3) {
      EXPECT_THAT(log.Lines(), ElementsAre("   ### HPEEndPage", "   HPEEndPage Failed 0x1f"));
    } else {
      EXPECT_THAT(log.Lines(), ElementsAre("END_PAGE", "   ### HPEEndPage",
                                           "   HPEEndPage Failed 0x1f", "END_PAGE_END"));
    }
  }
}

}  // namespace
}  // namespace zr7700
