// The built libraries through their public interface: the order of calls and the answers.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <limits>

#include "reference_engine/engine_status.h"
#include "reference_engine/test_engine_host.h"

namespace zr7700::reference_engine::testing {
namespace {

class EngineOrderTest : public ::testing::TestWithParam<FamilyName> {
 protected:
  EngineOrderTest() : host_(GetParam()), calls_(host_.entries()), handle_(host_.handle()) {}

  void OpenDocument() {
    ASSERT_EQ(host_.Initialize(), kOk);
    ASSERT_EQ(host_.StartDocument(StandardTable(GetParam())), kOk);
  }
  void OpenPage() {
    OpenDocument();
    ASSERT_EQ(host_.SetProperties({}, 16, 16), kOk);
    ASSERT_EQ(calls_.HPEStartPage(handle_), kOk);
  }
  int32_t SendLine(uint32_t y) {
    return calls_.HPESendBand(handle_, 0, y, 1, 16, 64, line_.data());
  }

  EngineHost host_;
  const EntryTable& calls_;
  HPEHandle handle_;
  std::array<uint8_t, 64> line_ = {};
};

INSTANTIATE_TEST_SUITE_P(Families, EngineOrderTest, ::testing::Values(kHeronName, kGraniteName));

TEST_P(EngineOrderTest, ExportsAllEntries) {
#define ZR7700_EXPECT(name, type) EXPECT_NE(calls_.name, nullptr) << #name;
  HPE_ENTRIES(ZR7700_EXPECT)
#undef ZR7700_EXPECT
  EXPECT_NE(handle_, nullptr);
}

TEST_P(EngineOrderTest, RefusesEverythingBeforeInitialize) {
  EXPECT_EQ(host_.StartDocument(StandardTable(GetParam())), kWrongOrder);
  EXPECT_EQ(calls_.HPEStartPage(handle_), kWrongOrder);
  EXPECT_EQ(SendLine(0), kWrongOrder);
  EXPECT_EQ(calls_.HPEEndPage(handle_, 0), kWrongOrder);
  EXPECT_EQ(calls_.HPEEndDoc(handle_, 0), kWrongOrder);
}

TEST_P(EngineOrderTest, RefusesEveryPropertyBeforeInitialize) {
  EXPECT_EQ(calls_.SetInputResolution(handle_, 0, 600), kWrongOrder);
  EXPECT_EQ(calls_.SetLeftMargin(handle_, 1916), kWrongOrder);
  EXPECT_EQ(calls_.SetTopMargin(handle_, 69), kWrongOrder);
  EXPECT_EQ(calls_.SetPrintableWidth(handle_, 2834), kWrongOrder);
  EXPECT_EQ(calls_.SetPrintableHeight(handle_, 2834), kWrongOrder);
  EXPECT_EQ(calls_.SetPhysicalWidth(handle_, 5100), kWrongOrder);
  EXPECT_EQ(calls_.SetInstalledCartridge(handle_, 0, 4, 1), kWrongOrder);
  EXPECT_EQ(calls_.SetHPERasterFormat(handle_, 4), kWrongOrder);
  EXPECT_EQ(calls_.SetAlignmentInformation(handle_, 0, 112), kWrongOrder);
  EXPECT_EQ(calls_.SetPageIntent(handle_, 1), kWrongOrder);
  EXPECT_EQ(calls_.SetMediaType(handle_, 1), kWrongOrder);
  EXPECT_EQ(calls_.SetOutputPrintQuality(handle_, 2), kWrongOrder);
  EXPECT_EQ(calls_.SetPaperTray(handle_, 2), kWrongOrder);
  EXPECT_EQ(calls_.SetImageSharpeningLevel(handle_, 11), kWrongOrder);
}

TEST_P(EngineOrderTest, RefusesCallsOutOfOrder) {
  ASSERT_EQ(host_.Initialize(), kOk);
  EXPECT_EQ(calls_.HPEStartPage(handle_), kWrongOrder);
  ASSERT_EQ(host_.StartDocument(StandardTable(GetParam())), kOk);
  EXPECT_EQ(host_.StartDocument(StandardTable(GetParam())), kWrongOrder);
  EXPECT_EQ(host_.Initialize(), kWrongOrder);
  EXPECT_EQ(SendLine(0), kWrongOrder);
  EXPECT_EQ(calls_.HPEEndPage(handle_, 0), kWrongOrder);
  ASSERT_EQ(host_.SetProperties({}, 16, 16), kOk);
  ASSERT_EQ(calls_.HPEStartPage(handle_), kOk);
  EXPECT_EQ(calls_.HPEStartPage(handle_), kWrongOrder);
  EXPECT_EQ(calls_.HPEEndPage(handle_, 0), kOk);
  EXPECT_EQ(calls_.HPEEndPage(handle_, 0), kWrongOrder);
  EXPECT_EQ(calls_.HPEEndDoc(handle_, 0), kOk);
  EXPECT_EQ(calls_.HPEEndDoc(handle_, 0), kWrongOrder);
}

TEST_P(EngineOrderTest, RefusesHandlesOfNoInstance) {
  HPEHandle dropped = calls_.CreateHostPrintEngine();
  calls_.DestroyHostPrintEngine(dropped);
  for (HPEHandle handle : {HPEHandle{nullptr}, dropped, HPEHandle{&line_}}) {
    EXPECT_EQ(calls_.HPEInitialize(handle, "a", "a", "a", "a"), kBadHandle);
    EXPECT_EQ(calls_.HPEStartPage(handle), kBadHandle);
    EXPECT_EQ(calls_.HPEEndDoc(handle, 0), kBadHandle);
    EXPECT_EQ(calls_.SetTopMargin(handle, 1), kBadHandle);
    calls_.DestroyHostPrintEngine(handle);
  }
}

TEST_P(EngineOrderTest, RefusesMissingPathsAndCallback) {
  EXPECT_EQ(calls_.HPEInitialize(handle_, "a", nullptr, "a", "a"), kBadValue);
  EXPECT_EQ(calls_.HPEInitialize(handle_, "a", "a", "a", ""), kBadValue);
  ASSERT_EQ(host_.Initialize(), kOk);
  const std::string table = StandardTable(GetParam());
  EXPECT_EQ(calls_.HPEStartDoc(handle_, nullptr, table.c_str(), 0, 0, 142, nullptr), kBadValue);
  const HPEOutputCallback ignore = [](void*, uint8_t*, uint32_t) {};
  EXPECT_EQ(calls_.HPEStartDoc(handle_, ignore, nullptr, 0, 0, 142, nullptr), kBadValue);
  EXPECT_EQ(calls_.HPEStartDoc(handle_, ignore, table.c_str(), 0, 0, 141, nullptr), kBadValue);
  EXPECT_EQ(calls_.HPEStartDoc(handle_, ignore, table.c_str(), 1, 0, 142, nullptr), kBadValue);
  EXPECT_EQ(calls_.HPEStartDoc(handle_, ignore, table.c_str(), 0, 1, 142, nullptr), kBadValue);
  EXPECT_EQ(calls_.HPEStartDoc(handle_, ignore, table.c_str(), 0, 0, 142, nullptr), kOk);
}

TEST_P(EngineOrderTest, RefusesBrokenColorTables) {
  ASSERT_EQ(host_.Initialize(), kOk);
  const std::filesystem::path scratch =
      std::filesystem::temp_directory_path() / ("broken_table_" + std::to_string(getpid()));
  EXPECT_EQ(host_.StartDocument("/nonexistent/table"), kBadColorTable);
  EXPECT_EQ(host_.StartDocument(std::filesystem::temp_directory_path()), kBadColorTable);
  std::ofstream(scratch) << "";
  EXPECT_EQ(host_.StartDocument(scratch), kBadColorTable);
  std::ofstream(scratch) << std::string(5000, 'x');
  EXPECT_EQ(host_.StartDocument(scratch), kBadColorTable);
  std::filesystem::copy_file(StandardTable(GetParam()), scratch,
                             std::filesystem::copy_options::overwrite_existing);
  std::filesystem::resize_file(scratch, 1000);
  EXPECT_EQ(host_.StartDocument(scratch), kBadColorTable);
  std::filesystem::remove(scratch);
  EXPECT_EQ(host_.StartDocument(StandardTable(GetParam())), kOk);
}

TEST_P(EngineOrderTest, TakesTheMediaThatItsFamilyTellsApart) {
  ASSERT_EQ(host_.Initialize(), kOk);
  const bool granite = GetParam().letter == 'G';
  EXPECT_EQ(calls_.SetMediaType(handle_, 1), kOk);
  for (const uint32_t media : {2U, 7U, 8U, 9U})
    EXPECT_EQ(calls_.SetMediaType(handle_, media), granite ? kOk : kBadValue) << media;
  for (const uint32_t media : {0U, 3U, 6U, 10U, 0xFFFFFFFFU})
    EXPECT_EQ(calls_.SetMediaType(handle_, media), kBadValue) << media;
}

struct BadNumber {
  const char* name;
  SetNumberEntry EntryTable::*entry;
  int32_t value;
};
constexpr int32_t kHuge = std::numeric_limits<int32_t>::max();
constexpr int32_t kTiny = std::numeric_limits<int32_t>::min();

TEST_P(EngineOrderTest, RefusesNumbersThatThePrinterCannotDo) {
  ASSERT_EQ(host_.Initialize(), kOk);
  const BadNumber kBad[] = {{"left", &EntryTable::SetLeftMargin, 5101},
                            {"left", &EntryTable::SetLeftMargin, kTiny},
                            {"top", &EntryTable::SetTopMargin, -1},
                            {"top", &EntryTable::SetTopMargin, kHuge},
                            {"width", &EntryTable::SetPrintableWidth, 0},
                            {"width", &EntryTable::SetPrintableWidth, 5101},
                            {"height", &EntryTable::SetPrintableHeight, 0},
                            {"height", &EntryTable::SetPrintableHeight, kHuge},
                            {"reach", &EntryTable::SetPhysicalWidth, 0},
                            {"reach", &EntryTable::SetPhysicalWidth, kHuge},
                            {"intent", &EntryTable::SetPageIntent, 0},
                            {"tray", &EntryTable::SetPaperTray, 1},
                            {"sharp", &EntryTable::SetImageSharpeningLevel, 0},
                            {"sharp", &EntryTable::SetImageSharpeningLevel, 13}};
  for (const BadNumber& bad : kBad)
    EXPECT_EQ((calls_.*bad.entry)(handle_, bad.value), kBadValue) << bad.name << bad.value;
}

TEST_P(EngineOrderTest, RefusesCodesThatThePrinterDoesNotKnow) {
  ASSERT_EQ(host_.Initialize(), kOk);
  EXPECT_EQ(calls_.SetInputResolution(handle_, 2, 600), kBadValue);
  EXPECT_EQ(calls_.SetInputResolution(handle_, 0, 1200), kBadValue);
  EXPECT_EQ(calls_.SetInputResolution(handle_, 0, 0), kBadValue);
  EXPECT_EQ(calls_.SetInstalledCartridge(handle_, 2, 4, 1), kBadValue);
  EXPECT_EQ(calls_.SetInstalledCartridge(handle_, 0, 3, 1), kBadValue);
  EXPECT_EQ(calls_.SetInstalledCartridge(handle_, 1, 3, 1), kBadValue);
  EXPECT_EQ(calls_.SetInstalledCartridge(handle_, 1, 4, 0), kBadValue);
  EXPECT_EQ(calls_.SetInstalledCartridge(handle_, 0, 4, 2), kBadValue);
  EXPECT_EQ(calls_.SetHPERasterFormat(handle_, 3), kBadValue);
  EXPECT_EQ(calls_.SetAlignmentInformation(handle_, 4, 0), kBadValue);
  EXPECT_EQ(calls_.SetAlignmentInformation(handle_, 6, 256), kBadValue);
  EXPECT_EQ(calls_.SetOutputPrintQuality(handle_, 1), kBadValue);
}

TEST_P(EngineOrderTest, RefusesPagesWithoutGeometry) {
  OpenDocument();
  EXPECT_EQ(calls_.HPEStartPage(handle_), kBadGeometry);
  ASSERT_EQ(host_.SetProperties({}, 100, 100), kOk);
  ASSERT_EQ(calls_.SetInputResolution(handle_, 1, 300), kOk);
  EXPECT_EQ(calls_.HPEStartPage(handle_), kBadGeometry);
  ASSERT_EQ(calls_.SetInputResolution(handle_, 1, 600), kOk);
  // Nothing of the page lies within the carriage's reach.
  ASSERT_EQ(calls_.SetLeftMargin(handle_, 5100), kOk);
  EXPECT_EQ(calls_.HPEStartPage(handle_), kBadGeometry);
  ASSERT_EQ(calls_.SetLeftMargin(handle_, -100), kOk);
  EXPECT_EQ(calls_.HPEStartPage(handle_), kBadGeometry);
  ASSERT_EQ(calls_.SetLeftMargin(handle_, 5099), kOk);
  ASSERT_EQ(calls_.SetInstalledCartridge(handle_, 0, 4, 0), kOk);
  EXPECT_EQ(calls_.HPEStartPage(handle_), kBadGeometry);
  ASSERT_EQ(calls_.SetInstalledCartridge(handle_, 0, 4, 1), kOk);
  EXPECT_EQ(calls_.HPEStartPage(handle_), kOk);
}

TEST_P(EngineOrderTest, RefusesAnUnknownPrinterInTheIniFile) {
  OpenDocument();
  ASSERT_EQ(host_.SetProperties({}, 16, 16), kOk);
  for (const char* printer : {"2 ", "0 ", "1x", ""}) {
    host_.WriteIni("[Configuration]\nPrinter=" + std::string(printer) + "\n");
    EXPECT_EQ(calls_.HPEStartPage(handle_), kBadConfiguration) << printer;
  }
  host_.WriteIni(std::string(1 << 17, '\n'));
  EXPECT_EQ(calls_.HPEStartPage(handle_), kBadConfiguration);
  host_.WriteIni("[Configuration]\nPrinter=1 \n");
  EXPECT_EQ(calls_.HPEStartPage(handle_), kOk);
}

TEST_P(EngineOrderTest, RefusesBadBands) {
  OpenPage();
  EXPECT_EQ(calls_.HPESendBand(handle_, 1, 0, 1, 16, 64, line_.data()), kBadValue);
  EXPECT_EQ(calls_.HPESendBand(handle_, 0, 0, 1, 16, 64, nullptr), kBadValue);
  EXPECT_EQ(calls_.HPESendBand(handle_, 0, 0, 0, 16, 64, line_.data()), kBadValue);
  EXPECT_EQ(calls_.HPESendBand(handle_, 0, 0, 1, 0, 64, line_.data()), kBadValue);
  EXPECT_EQ(calls_.HPESendBand(handle_, 0, 0, 1, 17, 68, line_.data()), kBadValue);
  EXPECT_EQ(calls_.HPESendBand(handle_, 0, 0, 1, 16, 63, line_.data()), kBadValue);
  EXPECT_EQ(calls_.HPESendBand(handle_, 0, 16, 1, 16, 64, line_.data()), kBadValue);
  EXPECT_EQ(calls_.HPESendBand(handle_, 0, 0, 17, 16, 64, line_.data()), kBadValue);
  EXPECT_EQ(calls_.HPESendBand(handle_, 0, 0xFFFFFFFF, 2, 16, 64, line_.data()), kBadValue);
  EXPECT_EQ(SendLine(3), kOk);
  EXPECT_EQ(SendLine(3), kBadValue);
  EXPECT_EQ(SendLine(2), kBadValue);
  EXPECT_EQ(SendLine(15), kOk);
  EXPECT_EQ(calls_.HPEEndPage(handle_, 0), kOk);
}

TEST_P(EngineOrderTest, ReservedArgumentsOfTheEndsAreZero) {
  OpenPage();
  EXPECT_EQ(calls_.HPEEndPage(handle_, 7), kBadValue);
  EXPECT_EQ(SendLine(0), kOk);
  EXPECT_EQ(calls_.HPEEndPage(handle_, 0), kOk);
  EXPECT_EQ(calls_.HPEEndDoc(handle_, 9), kBadValue);
  EXPECT_EQ(calls_.HPEEndDoc(handle_, 0), kOk);
}

TEST_P(EngineOrderTest, AnEmptyDocumentSendsNothing) {
  OpenDocument();
  EXPECT_EQ(calls_.HPEEndDoc(handle_, 0), kOk);
  EXPECT_TRUE(host_.blocks().empty());
}

TEST_P(EngineOrderTest, EndingTheDocumentGivesAnOpenPageUp) {
  OpenPage();
  EXPECT_EQ(SendLine(0), kOk);
  EXPECT_EQ(calls_.HPEEndDoc(handle_, 0), kOk);
  TestPrinter printer;
  const std::vector<uint8_t> stream = host_.Stream();
  ASSERT_TRUE(printer.Print(stream)) << printer.error();
  ASSERT_EQ(printer.documents()[0].pages.size(), 1U);
  EXPECT_TRUE(printer.documents()[0].pages[0].aborted);
  EXPECT_EQ(printer.documents()[0].pages_aborted, 1U);
  // The next document starts afresh.
  EXPECT_EQ(host_.StartDocument(StandardTable(GetParam())), kOk);
  EXPECT_EQ(calls_.HPEStartPage(handle_), kOk);
}

TEST_P(EngineOrderTest, DestroyIsFineInEveryState) {
  for (int state = 0; state < 4; ++state) {
    EngineHost host(GetParam());
    if (state > 0) {
      ASSERT_EQ(host.Initialize(), kOk);
    }
    if (state > 1) {
      ASSERT_EQ(host.StartDocument(StandardTable(GetParam())), kOk);
    }
    if (state > 2) {
      ASSERT_EQ(host.SetProperties({}, 16, 16), kOk);
      ASSERT_EQ(host.entries().HPEStartPage(host.handle()), kOk);
    }
    host.entries().DestroyHostPrintEngine(host.handle());
    EXPECT_EQ(host.entries().HPEStartPage(host.handle()), kBadHandle);
  }
}

TEST_P(EngineOrderTest, ACallbackCannotReenterItsInstance) {
  OpenDocument();
  ASSERT_EQ(host_.SetProperties({}, 16, 16), kOk);
  int32_t answer = 0;
  host_.on_output = [&] {
    answer = calls_.HPEEndDoc(handle_, 0);
    calls_.DestroyHostPrintEngine(handle_);
  };
  EXPECT_EQ(calls_.HPEStartPage(handle_), kOk);
  EXPECT_EQ(answer, kReentered);
  host_.on_output = nullptr;
  EXPECT_EQ(calls_.HPEEndPage(handle_, 0), kOk);
}

}  // namespace
}  // namespace zr7700::reference_engine::testing
