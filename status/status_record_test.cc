// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/status_record.h"

#include <gtest/gtest.h>

#include "status/test_records.h"

namespace zr7700 {
namespace {

// Nothing but the marks and the two bytes behind the first: 0x8E + 0x5A = 0xE8.
PrinterStatusRecord PlainRecord() {
  PrinterStatusRecord record = {};
  record[0] = 0x01;
  record[1] = 0x8E;
  record[2] = 0x5A;
  record[142] = 0xE8;
  record[143] = 0x04;
  return record;
}

TEST(IsWellFormed, AcceptsMarksAndChecksum) { EXPECT_TRUE(IsWellFormed(PlainRecord())); }

TEST(IsWellFormed, ChecksumIsModulo256) {
  PrinterStatusRecord record;
  record.fill(0xFF);
  record[0] = 0x01;
  record[142] = 0x73;  // 141 x 255 = 35955 = 140 x 256 + 115
  record[143] = 0x04;
  EXPECT_TRUE(IsWellFormed(record));
  record[142] = 0x74;
  EXPECT_FALSE(IsWellFormed(record));
}

TEST(IsWellFormed, ChecksumLeavesOutStartMarkChecksumAndEndMark) {
  PrinterStatusRecord record = {};
  record[0] = 0x01;
  record[142] = 0x00;
  record[143] = 0x04;
  EXPECT_TRUE(IsWellFormed(record));
}

TEST(IsWellFormed, ChecksumBeginsWithByte1AndEndsWithByte141) {
  for (size_t i : {size_t{1}, size_t{2}, size_t{75}, size_t{140}, size_t{141}}) {
    PrinterStatusRecord record = PlainRecord();
    record[i]++;
    EXPECT_FALSE(IsWellFormed(record)) << i;
    record[142]++;
    EXPECT_TRUE(IsWellFormed(record)) << i;
  }
}

TEST(IsWellFormed, RefusesAnotherStartMark) {
  PrinterStatusRecord record = PlainRecord();
  record[0] = 0x02;
  EXPECT_FALSE(IsWellFormed(record));
}

TEST(IsWellFormed, RefusesAnotherEndMark) {
  PrinterStatusRecord record = PlainRecord();
  record[143] = 0x05;
  EXPECT_FALSE(IsWellFormed(record));
}

TEST(IsWellFormed, TakesAnythingInTheTwoBytesUsedForRealigning) {
  PrinterStatusRecord record = PlainRecord();
  record[1] = 0x10;
  record[2] = 0x20;
  record[142] = 0x30;
  EXPECT_TRUE(IsWellFormed(record));
}

TEST(IsWellFormed, RefusesZeros) { EXPECT_FALSE(IsWellFormed(PrinterStatusRecord{})); }

// A buffer whose record starts at `start`; what lies over the end wraps around.
PrinterStatusRecord BufferWithStartAt(size_t start) {
  PrinterStatusRecord buffer = {};
  buffer[start] = 0x01;
  buffer[(start + 1) % 144] = 0x8E;
  buffer[(start + 2) % 144] = 0x5A;
  return buffer;
}

TEST(FindRecordStart, FindsEveryPlace) {
  for (size_t start = 0; start < 144; start++) {
    EXPECT_EQ(FindRecordStart(BufferWithStartAt(start), 144), std::optional<size_t>(start));
  }
}

TEST(FindRecordStart, TakesTheFirstOfTwo) {
  PrinterStatusRecord buffer = BufferWithStartAt(37);
  buffer[90] = 0x01;
  buffer[91] = 0x8E;
  buffer[92] = 0x5A;
  EXPECT_EQ(FindRecordStart(buffer, 144), std::optional<size_t>(37));
}

TEST(FindRecordStart, NeedsAllThreeBytes) {
  for (size_t i : {size_t{37}, size_t{38}, size_t{39}}) {
    PrinterStatusRecord buffer = BufferWithStartAt(37);
    buffer[i]++;
    EXPECT_EQ(FindRecordStart(buffer, 144), std::nullopt) << i;
  }
}

TEST(FindRecordStart, FindsNothingInAFailedOrEmptyRead) {
  const PrinterStatusRecord buffer = BufferWithStartAt(0);
  EXPECT_EQ(FindRecordStart(buffer, -1), std::nullopt);
  EXPECT_EQ(FindRecordStart(buffer, 0), std::nullopt);
}

TEST(FindRecordStart, LooksForTheStartOnlyWithinTheBytesRead) {
  const PrinterStatusRecord buffer = BufferWithStartAt(37);
  EXPECT_EQ(FindRecordStart(buffer, 37), std::nullopt);
  // The two bytes behind it are compared even where nothing was read.
  EXPECT_EQ(FindRecordStart(buffer, 38), std::optional<size_t>(37));
}

TEST(StatusRecord, ErrorWordIsLittleEndianOfThreeBytes) {
  PrinterStatusRecord record = PlainRecord();
  record[30] = 0x12;
  record[31] = 0x34;
  record[32] = 0x56;
  record[29] = 0xFF;
  record[33] = 0xFF;
  EXPECT_EQ(ErrorWord(record), 0x563412U);
}

TEST(StatusRecord, ErrorWordReachesAllBitsSet) {
  PrinterStatusRecord record = PlainRecord();
  record[30] = record[31] = record[32] = 0xFF;
  EXPECT_EQ(ErrorWord(record), 0xFFFFFFU);
}

TEST(StatusRecord, StateLetterIsByte29) {
  PrinterStatusRecord record = PlainRecord();
  record[29] = 'B';
  EXPECT_EQ(StateLetter(record), kStateBusy);
  record[29] = 'I';
  EXPECT_EQ(StateLetter(record), kStateIdle);
}

TEST(StatusRecord, StatusLetterIsReadyForHAndIOnly) {
  for (int letter = 0; letter < 256; letter++) {
    PrinterStatusRecord record = PlainRecord();
    record[26] = static_cast<uint8_t>(letter);
    EXPECT_EQ(IsStatusLetterReady(record), letter == 'H' || letter == 'I') << letter;
  }
}

TEST(StatusRecord, InkCountersAreBigEndian) {
  for (size_t offset : {size_t{49}, size_t{53}, size_t{57}}) {
    PrinterStatusRecord record = PlainRecord();
    record[offset] = 0x01;
    record[offset + 1] = 0x02;
    record[offset + 2] = 0x03;
    record[offset + 3] = 0x04;
    EXPECT_EQ(LargestInkCount(record), 0x01020304U) << offset;
  }
}

TEST(StatusRecord, LargestInkCountComparesUnsigned) {
  EXPECT_EQ(LargestInkCount(MakeRecord({.ink_count1 = 1, .ink_count2 = 0x80000000U})), 0x80000000U);
  EXPECT_EQ(LargestInkCount(MakeRecord({.ink_count1 = 0xFFFFFFFFU, .ink_count3 = 7})), 0xFFFFFFFFU);
  EXPECT_EQ(LargestInkCount(MakeRecord({.ink_count1 = 5, .ink_count2 = 6, .ink_count3 = 7})), 7U);
}

TEST(StatusRecord, BytesAroundTheInkCountersDoNotCount) {
  PrinterStatusRecord record = PlainRecord();
  record[48] = 0xFF;
  record[61] = 0xFF;
  EXPECT_EQ(LargestInkCount(record), 0U);
}

TEST(StatusRecord, CartridgeAndAlignmentHaveTheirOwnBytes) {
  PrinterStatusRecord record = PlainRecord();
  record[98] = 'V';
  record[99] = 2;
  record[102] = 200;
  record[103] = 201;
  EXPECT_EQ(CartridgeLetter(record), 'V');
  EXPECT_EQ(AlignmentFlag(record), 2);
  EXPECT_EQ(AlignmentValue6(record), 200);
  EXPECT_EQ(AlignmentValue14(record), 201);
}

}  // namespace
}  // namespace zr7700
