// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/condition_reports.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "tests/support/log_capture.h"
#include "tests/support/stream_capture.h"

namespace zr7700 {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// The texts in full, as a person gets to see them.
constexpr char kInkEmptyOn[] =
    "STATE: +marker-supply-empty\n"
    "ERROR: unrecoverable: Ink is low.  Install a new cartridge.\n";
constexpr char kInkEmptyOff[] =
    "STATE: -marker-supply-empty\n"
    "ERROR: recovered: Ink is low.  Install a new cartridge.\n";
constexpr char kInkLowOn[] =
    "STATE: +marker-supply-low\n"
    "ERROR: recoverable: Ink is low.  Install a new cartridge or press the button on top of the "
    "printer to continue using the current cartridge.\n";
constexpr char kInkLowOff[] =
    "STATE: -marker-supply-low\n"
    "ERROR: recovered: Continuing\n"
    "ERROR: recovered: Ink is low.  Install a new cartridge or press the button on top of the "
    "printer to continue using the current cartridge.\n";
constexpr char kPaperOutOn[] =
    "STATE: +media-needed\n"
    "ERROR: recoverable: Disc input bin is empty.  Open the cover, add more discs, and close the "
    "cover to continue.\n";
constexpr char kPaperOutOff[] =
    "STATE: -media-needed\n"
    "ERROR: recovered: Continuing\n"
    "ERROR: recovered: Disc input bin is empty.  Open the cover, add more discs, and close the "
    "cover to continue.\n";
constexpr char kAlignmentOn[] =
    "ERROR: recoverable: The cartridge needs aligning.  Please press Stop Job, launch the Printer "
    "Configuation Utility, and select 'Align Cartridge' to align the cartride.  Once the alignment "
    "is complete close the utility and select 'Resume Job' to continue your job.\n\nTo launch the "
    "Printer Configuration Utility, highlight the printer in the printer list and select "
    "'Configure'.\n";
constexpr char kAlignmentOff[] =
    "ERROR: recovered: Continuing\n"
    "ERROR: recovered: The cartridge needs aligning.  Please press Stop Job, launch the Printer "
    "Configuation Utility, and select 'Align Cartridge' to align the cartride.  Once the alignment "
    "is complete close the utility and select 'Resume Job' to continue your job.\n\nTo launch the "
    "Printer Configuration Utility, highlight the printer in the printer list and select "
    "'Configure'.\n";

class ConditionReports : public ::testing::Test {
 protected:
  // Every test begins with nothing shown.
  ConditionReports() { Report({}); }
  ~ConditionReports() override { Report({}); }

  std::string Report(const PrinterConditions& conditions) {
    log_.Clear();
    test::StderrCapture capture;
    ReportPrinterConditions(conditions);
    return capture.Take();
  }

  test::LogCapture log_;
};

TEST_F(ConditionReports, InkEmptyTurnsOn) {
  EXPECT_EQ(Report({.ink_empty = true}), kInkEmptyOn);
  EXPECT_THAT(log_.Lines(), ElementsAre("Setting ink empty"));
}

TEST_F(ConditionReports, InkEmptyTurnsOff) {
  Report({.ink_empty = true});
  EXPECT_EQ(Report({}), kInkEmptyOff);
  EXPECT_THAT(log_.Lines(), ElementsAre("Clearing ink empty"));
}

TEST_F(ConditionReports, InkLowTurnsOn) {
  EXPECT_EQ(Report({.ink_low = true}), kInkLowOn);
  EXPECT_THAT(log_.Lines(), ElementsAre("Setting ink low"));
}

TEST_F(ConditionReports, InkLowTurnsOff) {
  Report({.ink_low = true});
  EXPECT_EQ(Report({}), kInkLowOff);
  EXPECT_THAT(log_.Lines(), ElementsAre("Clearing ink low"));
}

TEST_F(ConditionReports, PaperOutTurnsOn) {
  EXPECT_EQ(Report({.paper_out = true}), kPaperOutOn);
  EXPECT_THAT(log_.Lines(), ElementsAre("Setting paper out"));
}

TEST_F(ConditionReports, PaperOutTurnsOff) {
  Report({.paper_out = true});
  EXPECT_EQ(Report({}), kPaperOutOff);
  EXPECT_THAT(log_.Lines(), ElementsAre("Clearing paper out"));
}

TEST_F(ConditionReports, AlignmentTurnsOnWithoutAStateLine) {
  EXPECT_EQ(Report({.alignment_needed = true}), kAlignmentOn);
  EXPECT_THAT(log_.Lines(), ElementsAre("Setting alignment needed"));
}

TEST_F(ConditionReports, AlignmentTurnsOff) {
  Report({.alignment_needed = true});
  EXPECT_EQ(Report({}), kAlignmentOff);
  EXPECT_THAT(log_.Lines(), ElementsAre("Clearing alignment needed"));
}

TEST_F(ConditionReports, OnlyAChangePrints) {
  const PrinterConditions shown[] = {
      {.ink_low = true}, {.ink_empty = true}, {.paper_out = true}, {.alignment_needed = true}};
  for (const PrinterConditions& conditions : shown) {
    Report(conditions);
    EXPECT_EQ(Report(conditions), "");
    EXPECT_THAT(log_.Lines(), IsEmpty());
  }
  Report({});
  EXPECT_EQ(Report({}), "");
}

TEST_F(ConditionReports, AnErrorWithoutAConditionPrintsNothing) {
  EXPECT_EQ(Report({.error_word = 0x04, .any = true}), "");
}

TEST_F(ConditionReports, OrderIsEmptyLowPaperAlignment) {
  const PrinterConditions all = {
      .ink_low = true, .ink_empty = true, .paper_out = true, .alignment_needed = true};
  EXPECT_EQ(Report(all), std::string(kInkEmptyOn) + kInkLowOn + kPaperOutOn + kAlignmentOn);
  EXPECT_THAT(log_.Lines(), ElementsAre("Setting ink empty", "Setting ink low", "Setting paper out",
                                        "Setting alignment needed"));
  EXPECT_EQ(Report({}), std::string(kInkEmptyOff) + kInkLowOff + kPaperOutOff + kAlignmentOff);
  EXPECT_THAT(log_.Lines(), ElementsAre("Clearing ink empty", "Clearing ink low",
                                        "Clearing paper out", "Clearing alignment needed"));
}

TEST_F(ConditionReports, LowInkThatBecomesEmptyChangesBoth) {
  Report({.ink_low = true});
  EXPECT_EQ(Report({.ink_empty = true}), std::string(kInkEmptyOn) + kInkLowOff);
}

TEST_F(ConditionReports, TheFourArgumentsComeLowEmptyPaperAlignment) {
  test::StderrCapture low;
  ReportPrinterConditions(true, false, false, false);
  EXPECT_EQ(low.Take(), kInkLowOn);
  test::StderrCapture empty;
  ReportPrinterConditions(true, true, false, false);
  EXPECT_EQ(empty.Take(), kInkEmptyOn);
  test::StderrCapture paper;
  ReportPrinterConditions(true, true, true, false);
  EXPECT_EQ(paper.Take(), kPaperOutOn);
  test::StderrCapture alignment;
  ReportPrinterConditions(true, true, true, true);
  EXPECT_EQ(alignment.Take(), kAlignmentOn);
}

TEST_F(ConditionReports, LogsAtTheLowestLevel) {
  const test::LogCapture log(1);
  Report({.ink_low = true, .ink_empty = true, .paper_out = true, .alignment_needed = true});
  EXPECT_EQ(log.Lines().size(), 4U);
}

TEST_F(ConditionReports, FlushesStandardError) {
  test::StderrCapture capture;
  static char buffer[4096];
  setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
  ReportPrinterConditions({.paper_out = true});
  EXPECT_EQ(capture.Arrived(), kPaperOutOn);
  setvbuf(stderr, nullptr, _IONBF, 0);
}

TEST(ClearPrinterStates, WithdrawsThreeReasons) {
  test::StderrCapture capture;
  ClearPrinterStates();
  EXPECT_EQ(capture.Take(),
            "STATE: -marker-supply-empty\nSTATE: -marker-supply-low\nSTATE: -media-needed\n");
}

}  // namespace
}  // namespace zr7700
