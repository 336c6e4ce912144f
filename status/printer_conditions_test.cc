// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/printer_conditions.h"

#include <gtest/gtest.h>

#include "status/test_printer.h"
#include "status/test_records.h"
#include "tests/support/own_process.h"

namespace zr7700 {
namespace {

PrinterConditions ConditionsOf(const RecordValues& values) {
  test::ScriptPrinter({MakeRecord(values)});
  return ReadConditions();
}

// The four conditions as letters: l, e, p, a.
std::string Letters(const PrinterConditions& conditions) {
  std::string letters;
  if (conditions.ink_low) letters += 'l';
  if (conditions.ink_empty) letters += 'e';
  if (conditions.paper_out) letters += 'p';
  if (conditions.alignment_needed) letters += 'a';
  return letters;
}

TEST(ReadErrorWord, TakesItFromARecordThatIsNotBusy) {
  test::ScriptPrinter({MakeRecord({.state = 'I', .error_word = 0x123456}),
                       MakeRecord({.state = 'X', .error_word = 0x24})});
  PrinterStatusRecord record;
  EXPECT_EQ(ReadErrorWord(record), 0x123456U);
  EXPECT_EQ(ReadErrorWord(record), 0x24U);
}

TEST(ReadErrorWord, HandsTheRecordOut) {
  const PrinterStatusRecord sent = MakeRecord({.error_word = 0x10, .serial = 9});
  test::ScriptPrinter({sent});
  PrinterStatusRecord record;
  ReadErrorWord(record);
  EXPECT_EQ(record, sent);
}

TEST(ReadErrorWord, KeepsTheLastOneWhileThePrinterIsBusy) {
  const PrinterStatusRecord busy = MakeRecord({.state = 'B', .error_word = 0x04});
  test::ScriptPrinter({MakeRecord({.error_word = 0x24}), busy});
  PrinterStatusRecord record;
  ReadErrorWord(record);
  EXPECT_EQ(ReadErrorWord(record), 0x24U);
  EXPECT_EQ(record, busy);
}

TEST(ReadErrorWord, KeepsTheLastOneAndZeroesTheRecordWhenTheReadFails) {
  test::ScriptPrinter({MakeRecord({.error_word = 0x24, .alignment = 1}), std::nullopt});
  PrinterStatusRecord record;
  ReadErrorWord(record);
  EXPECT_EQ(ReadErrorWord(record), 0x24U);
  EXPECT_EQ(record, PrinterStatusRecord{});
}

TEST(ReadErrorWord, IsZeroBeforeAnyRecord) {
  test::InOwnProcess([] {
    test::ScriptPrinter({std::nullopt, MakeRecord({.state = 'B', .error_word = 0xFF})});
    PrinterStatusRecord record;
    EXPECT_EQ(ReadErrorWord(record), 0U);
    EXPECT_EQ(ReadErrorWord(record), 0U);
  });
}

TEST(ReadConditions, FindsNoneInAContentPrinter) {
  const PrinterConditions conditions = ConditionsOf({});
  EXPECT_EQ(Letters(conditions), "");
  EXPECT_FALSE(conditions.any);
  EXPECT_EQ(conditions.error_word, 0U);
}

TEST(ReadConditions, PaperIsOutWhenBothBitsAreSet) {
  EXPECT_EQ(Letters(ConditionsOf({.error_word = 0x24})), "p");
  EXPECT_EQ(Letters(ConditionsOf({.error_word = 0xFFFFEF})), "p");
}

TEST(ReadConditions, OneBitOfTheTwoIsAnErrorWithoutACondition) {
  for (const uint32_t word : {0x04U, 0x20U}) {
    const PrinterConditions conditions = ConditionsOf({.error_word = word});
    EXPECT_EQ(Letters(conditions), "") << word;
    EXPECT_TRUE(conditions.any) << word;
    EXPECT_EQ(conditions.error_word, word);
  }
}

TEST(ReadConditions, AnyBitIsAnError) {
  for (int bit = 0; bit < 24; bit++) {
    EXPECT_TRUE(ConditionsOf({.error_word = 1U << bit}).any) << bit;
  }
}

TEST(ReadConditions, InkProblemIsLowUntilTheCountersSayEmpty) {
  EXPECT_EQ(Letters(ConditionsOf({.error_word = 0x10, .ink_count2 = 400'000'000})), "l");
  EXPECT_EQ(Letters(ConditionsOf({.error_word = 0x10, .ink_count2 = 400'000'001})), "e");
}

TEST(ReadConditions, InkProblemOfAnUnknownCartridgeIsLow) {
  EXPECT_EQ(
      Letters(ConditionsOf({.error_word = 0x10, .ink_count1 = 4'000'000'000, .cartridge = 'X'})),
      "l");
}

TEST(ReadConditions, EmptyCountersWithoutTheInkBitAreNothing) {
  EXPECT_EQ(Letters(ConditionsOf({.ink_count1 = 400'000'001})), "");
  EXPECT_EQ(Letters(ConditionsOf({.error_word = 0x01, .ink_count1 = 400'000'001})), "");
}

TEST(ReadConditions, AlignmentIsNeededForAnyValueButZero) {
  for (const uint8_t flag : {uint8_t{1}, uint8_t{2}, uint8_t{255}}) {
    const PrinterConditions conditions = ConditionsOf({.alignment = flag});
    EXPECT_EQ(Letters(conditions), "a") << int{flag};
    EXPECT_TRUE(conditions.any);
    EXPECT_EQ(conditions.error_word, 0U);
  }
}

TEST(ReadConditions, AllAtOnce) {
  EXPECT_EQ(Letters(ConditionsOf({.error_word = 0x34, .alignment = 1})), "lpa");
  EXPECT_EQ(Letters(ConditionsOf({.error_word = 0x34, .ink_count3 = 400'000'001, .alignment = 1})),
            "epa");
}

TEST(ReadConditions, ALostRecordKeepsTheConditionAndDropsTheAlignment) {
  test::ScriptPrinter({MakeRecord({.error_word = 0x24, .alignment = 1}), std::nullopt});
  EXPECT_EQ(Letters(ReadConditions()), "pa");
  const PrinterConditions lost = ReadConditions();
  EXPECT_EQ(Letters(lost), "p");
  EXPECT_EQ(lost.error_word, 0x24U);
}

// The zeroed record has no cartridge letter, so the ink cannot count as empty.
TEST(ReadConditions, ALostRecordTurnsEmptyInkIntoLowInk) {
  test::ScriptPrinter({MakeRecord({.error_word = 0x10, .ink_count1 = 400'000'001}), std::nullopt});
  EXPECT_EQ(Letters(ReadConditions()), "e");
  EXPECT_EQ(Letters(ReadConditions()), "l");
}

TEST(ReadConditions, ABusyRecordStillTellsOfTheAlignment) {
  test::ScriptPrinter(
      {MakeRecord({}), MakeRecord({.state = 'B', .error_word = 4, .alignment = 1})});
  ReadConditions();
  const PrinterConditions busy = ReadConditions();
  EXPECT_EQ(Letters(busy), "a");
  EXPECT_EQ(busy.error_word, 0U);
}

TEST(ReadConditionsTest, TellWhetherARecordCame) {
  test::ScriptPrinter({MakeRecord(), std::nullopt});
  EXPECT_TRUE(ReadConditions().has_record);
  EXPECT_FALSE(ReadConditions().has_record);
}

}  // namespace
}  // namespace zr7700
