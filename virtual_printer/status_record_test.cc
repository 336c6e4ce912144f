// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/status_record.h"

#include <gtest/gtest.h>

namespace zr7700::printer {
namespace {

TEST(StatusRecord, IdlePrinterByHand) {
  const StatusRecord record = BuildStatusRecord({});
  StatusRecord expected{};
  expected[0] = 0x01;
  expected[1] = 0x8E;
  expected[2] = 0x5A;
  expected[26] = 'I';
  expected[29] = 'I';
  expected[98] = 'Q';
  // 0x8E + 0x5A + 0x49 + 0x49 + 0x51 = 142 + 90 + 73 + 73 + 81 = 459 = 256 + 203
  expected[142] = 203;
  expected[143] = 0x04;
  EXPECT_EQ(record, expected);
}

TEST(StatusRecord, EveryItemAtItsPlace) {
  PrinterStatus status;
  status.state = 'B';
  status.ready = 'H';
  status.error_word = 0x563412;
  status.ink_use = {0x01020304, 0xA0B0C0D0, 400000001};
  status.cartridge = 0x25;
  status.alignment_needed = true;
  status.alignment_6 = 0x66;
  status.alignment_14 = 0xEE;
  const StatusRecord record = BuildStatusRecord(status);
  EXPECT_EQ(record[26], 'H');
  EXPECT_EQ(record[29], 'B');
  EXPECT_EQ(record[30], 0x12);
  EXPECT_EQ(record[31], 0x34);
  EXPECT_EQ(record[32], 0x56);
  const uint8_t ink[12] = {0x01, 0x02, 0x03, 0x04, 0xA0, 0xB0, 0xC0, 0xD0, 0x17, 0xD7, 0x84, 0x01};
  for (size_t i = 0; i < 12; ++i) EXPECT_EQ(record[49 + i], ink[i]) << i;
  EXPECT_EQ(record[98], 0x25);
  EXPECT_EQ(record[99], 1);
  EXPECT_EQ(record[102], 0x66);
  EXPECT_EQ(record[103], 0xEE);
}

TEST(StatusRecord, ChecksumLeavesTheMarksAndItselfOut) {
  StatusRecord record{};
  record.fill(1);
  record[0] = 99;
  record[142] = 77;
  record[143] = 88;
  EXPECT_EQ(RecordChecksum(record), 141);
  record[141] = 255;  // 140 + 255 = 395 = 256 + 139
  EXPECT_EQ(RecordChecksum(record), 139);
}

TEST(StatusRecord, UnusedBytesAreZero) {
  const StatusRecord record = BuildStatusRecord({.error_word = 0xFFFFFF, .cartridge = 'V'});
  for (size_t i = 3; i < 142; ++i) {
    if (i == 26 || (i >= 29 && i <= 32) || i == 98) continue;
    EXPECT_EQ(record[i], 0) << i;
  }
}

}  // namespace
}  // namespace zr7700::printer
