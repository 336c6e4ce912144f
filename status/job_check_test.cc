// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/job_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <vector>

#include "base/cancel_signal.h"
#include "engine/engine_loader.h"
#include "engine/job_variables.h"
#include "status/test_cartridges.h"
#include "status/test_notice.h"
#include "status/test_printer.h"
#include "status/test_records.h"
#include "status/test_sleep.h"
#include "status/utility_notices.h"
#include "tests/support/log_capture.h"
#include "tests/support/own_process.h"
#include "tests/support/stream_capture.h"

namespace zr7700 {

// In the place of the engine loader: what it was asked, and its answer.
static std::vector<PrinterStatusRecord> engine_loads;
static bool engine_loads_well = true;
static bool cancel_blocked_in_load = false;

bool LoadEngineForCartridge(std::span<const uint8_t> status_reply) {
  PrinterStatusRecord record = {};
  std::copy_n(status_reply.begin(), std::min(status_reply.size(), record.size()), record.begin());
  engine_loads.push_back(record);
  sigset_t mask;
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  cancel_blocked_in_load = sigismember(&mask, SIGTERM) == 1;
  return engine_loads_well;
}

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSubsetOf;
using ::testing::Not;

#define PRESS_THE_BUTTON                                                                     \
  "Press the button to change the cartridge. Install the new cartridge.  Finally press the " \
  "button to complete the install.\n"
#define ALIGN                                                                                  \
  "The cartridge needs aligning.  Please press Stop Job, launch the Printer Configuation "     \
  "Utility, and select 'Align Cartridge' to align the cartride.  Once the alignment is "       \
  "complete close the utility and select 'Resume Job' to continue your job.\n\nTo launch the " \
  "Printer Configuration Utility, highlight the printer in the printer list and select "       \
  "'Configure'.\n"

constexpr char kInvalid[] =
    "ERROR: recoverable: The Color cartridge is invalid!  " PRESS_THE_BUTTON;
constexpr char kMissing[] =
    "ERROR: recoverable: The Color cartridge is missing!  " PRESS_THE_BUTTON;
constexpr char kAlign[] = "ERROR: recoverable: " ALIGN;
constexpr char kOutOfInk[] =
    "ERROR: unrecoverable: The cartridge is out of ink.  " PRESS_THE_BUTTON;
constexpr char kAllRecovered[] =
    "ERROR: recovered: Unable to communicate with the printer.  Restart the printer and try your "
    "job again.\n"
    "ERROR: recovered: " ALIGN "ERROR: recovered: The cartridge is out of ink.  " PRESS_THE_BUTTON
    "ERROR: recovered: The Color cartridge is invalid!  " PRESS_THE_BUTTON
    "ERROR: recovered: The Color cartridge is missing!  " PRESS_THE_BUTTON;

constexpr char kRetriesFailed[] = "     StartOfPageJobCheck get status retries failed";

const test::Answer kGood = MakeRecord();
const test::Answer kNoCartridge = MakeRecord({.cartridge = 0x25});

class JobCheck : public ::testing::Test {
 protected:
  JobCheck() {
    job_variables = {};
    engine_loads.clear();
    engine_loads_well = true;
    test::ResetSleeps();
    test::ScriptNotices(kNoticeNoReply);
  }
  ~JobCheck() override { job_variables = {}; }

  // Runs the check with these answers; what it wrote on standard error stays in told_.
  bool Check(int page, const std::vector<test::Answer>& answers) {
    log_.Clear();
    test::ScriptPrinter(answers);
    test::StderrCapture capture;
    const bool result = StartOfPageJobCheck(page);
    told_ = capture.Take();
    return result;
  }

  // The log's line about the ink that is left.
  std::string PercentLine(char cartridge, uint32_t current) {
    Check(1, {MakeRecord({.ink_count1 = current, .cartridge = cartridge}), kGood});
    for (const std::string& line : log_.Lines()) {
      if (line.find("Percent") != std::string::npos) return line;
    }
    return "";
  }

  test::LogCapture log_;
  std::string told_;
};

TEST_F(JobCheck, GoesOnAtOnceWithAContentPrinter) {
  EXPECT_TRUE(Check(1, {kGood}));
  EXPECT_EQ(test::StatusRequests(), 1);
  EXPECT_EQ(test::SecondsSlept(), 0);
  EXPECT_EQ(told_, "");
  EXPECT_THAT(
      log_.Lines(),
      ElementsAre("     StartOfPageJobCheck", "     Checking Cartridges...", "In CheckCartridges",
                  "CheckCartridges: ** Cartridges are ok", "     Checking Cartridges Finished...",
                  "     Cart info 51", "     Checking Alignment", "     Checking Ink",
                  "     Checking Color Ink Level... ", "          Current: 0",
                  "          Max 190000000", "          Final 400000000", "          Percent 100",
                  "     #### NOT in Error Continue"));
}

TEST_F(JobCheck, LogsMilestonesAtLevel3AndTheRestAtLevel1) {
  const test::LogCapture log(2);
  Check(1, {kGood});
  EXPECT_THAT(log.Lines(), Not(Contains("     StartOfPageJobCheck")));
  EXPECT_THAT(log.Lines(), Not(Contains("     #### NOT in Error Continue")));
  EXPECT_THAT(log.Lines(), Contains("     Checking Alignment"));
  EXPECT_THAT(log.Lines(), Contains("          Percent 100"));
}

TEST_F(JobCheck, SixteenthFailedReadEndsTheFirstCheck) {
  EXPECT_FALSE(Check(0, {std::nullopt}));
  EXPECT_EQ(test::StatusRequests(), 16);
  EXPECT_EQ(test::SecondsSlept(), 15);
  EXPECT_EQ(told_, "");
  EXPECT_THAT(log_.Lines(), ElementsAre("     StartOfPageJobCheck", kRetriesFailed));
}

TEST_F(JobCheck, SixthFailedReadEndsAPagesCheck) {
  EXPECT_FALSE(Check(3, {std::nullopt}));
  EXPECT_EQ(test::StatusRequests(), 6);
  EXPECT_EQ(test::SecondsSlept(), 5);
}

TEST_F(JobCheck, GoesOnWhenTheLastRetrySucceeds) {
  std::vector<test::Answer> answers(5, std::nullopt);
  answers.push_back(kGood);
  EXPECT_TRUE(Check(1, answers));
}

TEST_F(JobCheck, ReadsThatSucceedDoNotRestoreTheRetries) {
  EXPECT_FALSE(Check(3, {std::nullopt, std::nullopt, kNoCartridge, std::nullopt, std::nullopt,
                         kNoCartridge, std::nullopt, kNoCartridge, std::nullopt, kGood}));
  EXPECT_EQ(test::StatusRequests(), 9);
  EXPECT_EQ(log_.Lines().back(), kRetriesFailed);
}

TEST_F(JobCheck, FailedReadsAloneTellNobody) {
  EXPECT_TRUE(Check(1, {std::nullopt, std::nullopt, kGood}));
  EXPECT_EQ(told_, "");
  EXPECT_EQ(test::ErrorNotices(), 0);
}

TEST_F(JobCheck, EveryCallHasItsOwnRetries) {
  EXPECT_FALSE(Check(3, {std::nullopt}));
  EXPECT_FALSE(Check(3, {std::nullopt}));
  EXPECT_EQ(test::StatusRequests(), 6);
}

TEST_F(JobCheck, CopiesTheAlignmentValuesAndTheReadiness) {
  const PrinterStatusRecord record =
      MakeRecord({.status_letter = 'I', .alignment_value6 = 17, .alignment_value14 = 255});
  Check(1, {record});
  EXPECT_EQ(job_variables.alignmentValue6, 17);
  EXPECT_EQ(job_variables.alignmentValue14, 255);
  EXPECT_EQ(job_variables.statusLetterReady, 1);
  Check(2, {MakeRecord({.status_letter = 'X'})});
  EXPECT_EQ(job_variables.statusLetterReady, 0);
  Check(2, {MakeRecord({.status_letter = 'H'})});
  EXPECT_EQ(job_variables.statusLetterReady, 1);
}

TEST_F(JobCheck, CopiesThemEvenInError) {
  Check(1, {MakeRecord({.cartridge = 0x25, .alignment_value6 = 3}),
            MakeRecord({.alignment_value6 = 4})});
  EXPECT_EQ(job_variables.alignmentValue6, 4);
}

TEST_F(JobCheck, MissingCartridgeIsToldOnEveryPassUntilItChanges) {
  EXPECT_TRUE(Check(1, {kNoCartridge, kNoCartridge, kNoCartridge, kGood}));
  EXPECT_EQ(told_, std::string(kMissing) + kMissing + kMissing + kAllRecovered);
  EXPECT_EQ(test::SecondsSlept(), 3);
  EXPECT_THAT(log_.Lines(), Contains("CheckCartridges: No cartridges installed").Times(3));
  EXPECT_THAT(log_.Lines(), Contains("     #### In Error Retry").Times(3));
}

TEST_F(JobCheck, LogsAPassWithAMissingCartridge) {
  Check(1, {kNoCartridge, kGood});
  std::vector<std::string> lines = log_.Lines();
  ASSERT_GE(lines.size(), 16U);
  lines.resize(16);
  EXPECT_THAT(lines, ElementsAre("     StartOfPageJobCheck", "     Checking Cartridges...",
                                 "In CheckCartridges", "CheckCartridges: No cartridges installed",
                                 "     Checking Cartridges Finished...", "     Cart info 25",
                                 "     Missing Cart", "     Cartridge Error. Tell user.",
                                 "     Checking Alignment", "     Checking Ink",
                                 "     Checking Color Ink Level... ", "          Current: 0",
                                 "          Max 190000000", "          Final 400000000",
                                 "          Percent 100", "     #### In Error Retry"));
}

TEST_F(JobCheck, ClearsTheErrorsOnceWhenTheyAreGone) {
  EXPECT_TRUE(Check(1, {kNoCartridge, kGood}));
  const std::vector<std::string> lines = log_.Lines();
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines[lines.size() - 2], "     #### NOT in Error Continue");
  EXPECT_EQ(lines.back(), "     clear all errors");
}

TEST_F(JobCheck, InvalidCartridge) {
  EXPECT_TRUE(Check(1, {MakeRecord({.cartridge = 'q'}), kGood}));
  EXPECT_EQ(told_, std::string(kInvalid) + kAllRecovered);
  const std::vector<std::string> lines = log_.Lines();
  EXPECT_THAT((std::vector<std::string>{"     Cart info 71", "     Invalid Cart",
                                        "     Cartridge Error. Tell user.",
                                        "CheckCartridges: Invalid cartridges (CMY) installed"}),
              IsSubsetOf(lines));
}

TEST_F(JobCheck, AlignmentNeeded) {
  EXPECT_TRUE(Check(1, {MakeRecord({.alignment = 1}), kGood}));
  EXPECT_EQ(told_, std::string(kAlign) + kAllRecovered);
  EXPECT_THAT(
      (std::vector<std::string>{"     Cart needs align", "     Alignment Needed. Tell user."}),
      IsSubsetOf(log_.Lines()));
}

TEST_F(JobCheck, OnlyTheValue1AsksForAlignment) {
  EXPECT_TRUE(Check(1, {MakeRecord({.alignment = 2})}));
  EXPECT_EQ(told_, "");
}

TEST_F(JobCheck, AlignmentSkipLeavesTheAlignmentUnchecked) {
  job_variables.alignmentSkip = 1;
  EXPECT_TRUE(Check(1, {MakeRecord({.alignment = 1})}));
  EXPECT_EQ(told_, "");
  EXPECT_THAT(log_.Lines(), Not(Contains("     Checking Alignment")));
}

TEST_F(JobCheck, AlignmentIsCheckedEvenWithoutACartridge) {
  Check(1, {MakeRecord({.cartridge = 0x20, .alignment = 1}), kGood});
  EXPECT_EQ(told_, std::string(kMissing) + kAlign + kAllRecovered);
}

TEST_F(JobCheck, OutOfInk) {
  EXPECT_TRUE(Check(1, {MakeRecord({.ink_count3 = 400'000'001}), kGood}));
  EXPECT_EQ(told_, std::string(kOutOfInk) + kAllRecovered);
  EXPECT_THAT((std::vector<std::string>{"          Current: 400000001", "     Cart out of ink",
                                        "     Final Ink Empty Error."}),
              IsSubsetOf(log_.Lines()));
}

TEST_F(JobCheck, EmptyLevelItselfIsNotOutOfInk) {
  for (const auto& [letter, low, level, log] : kExpectedCartridges) {
    const PrinterStatusRecord at_level =
        MakeRecord({.ink_count1 = level, .ink_count2 = 1, .ink_count3 = 1, .cartridge = letter});
    EXPECT_TRUE(Check(1, {at_level}));
    EXPECT_EQ(told_, "") << letter;
    const PrinterStatusRecord above = MakeRecord({.ink_count1 = level + 1, .cartridge = letter});
    EXPECT_TRUE(Check(1, {above, kGood}));
    EXPECT_EQ(told_, std::string(kOutOfInk) + kAllRecovered) << letter;
  }
}

TEST_F(JobCheck, AllErrorsAtOnceAreToldInTheirOrder) {
  Check(1, {MakeRecord({.ink_count1 = 400'000'001, .cartridge = 'X', .alignment = 1}), kGood});
  EXPECT_EQ(told_, std::string(kInvalid) + kAlign + kOutOfInk + kAllRecovered);
}

TEST_F(JobCheck, StoresTheInkLimitsOfTheCartridge) {
  for (const ExpectedCartridge& cartridge : kExpectedCartridges) {
    EXPECT_TRUE(Check(1, {MakeRecord({.cartridge = cartridge.letter})}));
    EXPECT_EQ(job_variables.inkLimitLow, cartridge.low) << cartridge.letter;
    EXPECT_EQ(job_variables.inkLimitHigh, cartridge.high) << cartridge.letter;
  }
}

TEST_F(JobCheck, FamilyOfAnEarlierPassStaysWhileNoCartridgeIsIn) {
  // Aligned, taken out and put back: the passes without a cartridge go by the limits of 'U'.
  Check(1, {MakeRecord({.cartridge = 'U', .alignment = 1}), kNoCartridge,
            MakeRecord({.cartridge = 'U'})});
  EXPECT_THAT(log_.Lines(), Contains("          Max 1440000000").Times(3));
}

TEST_F(JobCheck, EveryCallBeginsWithTheStandardFamily) {
  Check(1, {MakeRecord({.cartridge = 'V'})});
  Check(2, {kNoCartridge, MakeRecord({.cartridge = 'V'})});
  EXPECT_THAT(log_.Lines(), Contains("          Max 190000000").Times(1));
  EXPECT_THAT(log_.Lines(), Contains("          Final 3000000000").Times(1));
}

TEST_F(JobCheck, PercentIsRoundedToTheNearest) {
  EXPECT_EQ(PercentLine('Q', 0), "          Percent 100");
  EXPECT_EQ(PercentLine('Q', 95'000'000), "          Percent 50");
  EXPECT_EQ(PercentLine('Q', 190'000'000), "          Percent 0");
  // 2,850,000 left is 1.5 percent.
  EXPECT_EQ(PercentLine('Q', 187'150'000), "          Percent 2");
  EXPECT_EQ(PercentLine('Q', 187'150'001), "          Percent 1");
  EXPECT_EQ(PercentLine('P', 231'500'000), "          Percent 50");
}

TEST_F(JobCheck, PercentWrapsAboveTheWarningLevel) {
  // 2^32 - 1 = 4294967295; x 100 / 190000000 = 2260.51, rounded 2261.
  EXPECT_EQ(PercentLine('Q', 190'000'001), "          Percent 2261");
  // 190000000 - 400000000 + 2^32 = 4084967296; x 100 / 190000000 = 2149.98, rounded 2150.
  EXPECT_EQ(PercentLine('Q', 400'000'000), "          Percent 2150");
  // 2455000000 - 3000000000 + 2^32 = 3749967296; x 100 / 2455000000 = 152.75, rounded 153.
  EXPECT_EQ(PercentLine('V', 3'000'000'000), "          Percent 153");
}

TEST_F(JobCheck, LogsCountersAsUnsigned) {
  Check(1, {MakeRecord({.ink_count1 = 0xFFFFFFFF, .cartridge = 'V'}), kGood});
  EXPECT_THAT(log_.Lines(), Contains("          Current: 4294967295"));
}

TEST_F(JobCheck, UtilityIsToldOnceACall) {
  EXPECT_TRUE(Check(1, {kNoCartridge, kNoCartridge, kNoCartridge, kGood}));
  EXPECT_EQ(test::ErrorNotices(), 1);
  EXPECT_EQ(test::OtherNotices(), 0);
  EXPECT_TRUE(Check(2, {kNoCartridge, kGood}));
  EXPECT_EQ(test::ErrorNotices(), 2);
}

TEST_F(JobCheck, UtilityIsToldOnEveryPassUntilItIsReached) {
  test::ScriptNotices(kNoticeNotReachable);
  EXPECT_TRUE(Check(1, {kNoCartridge, kNoCartridge, kNoCartridge, kGood}));
  EXPECT_EQ(test::ErrorNotices(), 3);
}

TEST_F(JobCheck, UtilityIsToldAfterTheUser) {
  test::StderrCapture capture;
  std::string at_notice;
  test::ScriptNotices(kNoticeNoReply, [&] {
    fflush(stderr);
    at_notice = capture.Arrived();
  });
  test::ScriptPrinter({kNoCartridge, kGood});
  StartOfPageJobCheck(1);
  EXPECT_EQ(at_notice, kMissing);
}

TEST_F(JobCheck, UtilityIsNeverToldWhenSuppressed) {
  job_variables.SuppressStartingUtilityOnError = 1;
  EXPECT_TRUE(Check(1, {kNoCartridge, kNoCartridge, kGood}));
  EXPECT_EQ(test::ErrorNotices(), 0);
  EXPECT_THAT(log_.Lines(), Contains("     #### In Error Retry").Times(2));
}

TEST_F(JobCheck, UtilityIsNotToldOfAPrinterInOrder) {
  Check(1, {kGood});
  EXPECT_EQ(test::ErrorNotices(), 0);
}

TEST_F(JobCheck, FirstCheckLoadsTheEngineForTheRecord) {
  const PrinterStatusRecord record = MakeRecord({.cartridge = 'U', .serial = 5});
  EXPECT_TRUE(Check(0, {kNoCartridge, record}));
  EXPECT_THAT(engine_loads, ElementsAre(record));
  EXPECT_TRUE(cancel_blocked_in_load);
}

TEST_F(JobCheck, OtherChecksLoadNoEngine) {
  EXPECT_TRUE(Check(1, {kGood}));
  EXPECT_THAT(engine_loads, IsEmpty());
}

TEST_F(JobCheck, EngineThatDoesNotLoadEndsTheFirstCheck) {
  engine_loads_well = false;
  EXPECT_FALSE(Check(0, {kGood}));
  EXPECT_EQ(engine_loads.size(), 1U);
  EXPECT_EQ(log_.Lines().back(), "Error loading cartridge based library.");
}

TEST_F(JobCheck, ErrorsAreClearedBeforeTheEngineLoads) {
  engine_loads_well = false;
  EXPECT_FALSE(Check(0, {kNoCartridge, kGood}));
  EXPECT_EQ(told_, std::string(kMissing) + kAllRecovered);
  EXPECT_EQ(log_.Lines().back(), "Error loading cartridge based library.");
}

TEST_F(JobCheck, AnErrorHoldsTheJobWithoutLimit) {
  std::vector<test::Answer> answers(100, kNoCartridge);
  answers.push_back(kGood);
  EXPECT_TRUE(Check(1, answers));
  EXPECT_EQ(test::SecondsSlept(), 100);
}

TEST_F(JobCheck, ACancelBeforeThePassEndsItWithoutARead) {
  test::InOwnProcess([this] {
    InstallCancelHandler();
    raise(SIGTERM);
    EXPECT_FALSE(Check(1, {kGood}));
    EXPECT_EQ(test::StatusRequests(), 0);
    EXPECT_THAT(log_.Lines(), ElementsAre("     StartOfPageJobCheck", "     Job Cancelled"));
  });
}

TEST_F(JobCheck, ACancelEndsAnErrorAtTheNextPass) {
  test::InOwnProcess([this] {
    InstallCancelHandler();
    test::OnSleep([] { raise(SIGTERM); });
    EXPECT_FALSE(Check(1, {kNoCartridge}));
    EXPECT_EQ(test::StatusRequests(), 1);
    EXPECT_EQ(told_, kMissing);
    EXPECT_EQ(log_.Lines().back(), "     Job Cancelled");
  });
}

// The sixth failed read would be one too many.
TEST_F(JobCheck, AReadThatACancelCutShortIsNoFailedOne) {
  test::InOwnProcess([this] {
    InstallCancelHandler();
    test::ScriptPrinter({std::nullopt});
    test::OnStatusRequest([] {
      if (test::StatusRequests() == 5) raise(SIGTERM);
    });
    EXPECT_FALSE(StartOfPageJobCheck(1));
    EXPECT_EQ(test::StatusRequests(), 6);
    EXPECT_EQ(log_.Lines().back(), "     Job Cancelled");
  });
}

TEST_F(JobCheck, ACancelDuringTheReadSkipsAlignmentAndInk) {
  test::InOwnProcess([this] {
    InstallCancelHandler();
    test::ScriptPrinter({MakeRecord({.ink_count1 = 400'000'001, .alignment = 1})});
    test::OnStatusRequest([] { raise(SIGTERM); });
    test::StderrCapture capture;
    // The cartridge is in order and nothing else was looked at.
    EXPECT_TRUE(StartOfPageJobCheck(1));
    EXPECT_EQ(capture.Take(), "");
    EXPECT_THAT(log_.Lines(), Contains("     Checking Cartridges..."));
    EXPECT_THAT(log_.Lines(), Not(Contains("     Checking Alignment")));
    EXPECT_THAT(log_.Lines(), Not(Contains("     Checking Ink")));
    EXPECT_EQ(job_variables.inkLimitLow, 0U);
  });
}

}  // namespace
}  // namespace zr7700
