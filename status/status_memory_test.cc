// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/status_memory.h"

#include <gtest/gtest.h>

#include <string>

#include "status/test_memory.h"
#include "status/test_records.h"

namespace zr7700 {
namespace {

std::string TextOf(const PrinterStatusRecord& record) { return {record.begin(), record.end()}; }

class StatusMemory : public ::testing::Test {
 protected:
  ~StatusMemory() override { CloseStatusMemory(); }

  // Leaves an object of this size as an earlier job may have done.
  static void LeaveObject(size_t size_bytes, uid_t owner = geteuid()) {
    const int descriptor = shm_open(paths::kStatusMemory, O_RDWR | O_CREAT, 0600);
    const std::string content(size_bytes, '#');
    ASSERT_EQ(write(descriptor, content.data(), content.size()),
              static_cast<ssize_t>(content.size()));
    ASSERT_EQ(fchown(descriptor, owner, static_cast<gid_t>(-1)), 0);
    close(descriptor);
  }

  // What somebody else may do to the object.
  static void CutTo(off_t size_bytes) {
    const int descriptor = shm_open(paths::kStatusMemory, O_RDWR, 0);
    ASSERT_EQ(ftruncate(descriptor, size_bytes), 0);
    close(descriptor);
  }

  test::MemoryName name_;
};

TEST_F(StatusMemory, IsAnObjectOf144Zeros) {
  EXPECT_TRUE(CreateStatusMemory(144));
  const auto published = test::LookAtMemory();
  ASSERT_TRUE(published);
  EXPECT_EQ(published->info.st_size, 144);
  EXPECT_EQ(published->content, std::string(144, '\0'));
}

TEST_F(StatusMemory, IsReadableByEverybodyWhateverTheUmask) {
  const mode_t old_mask = umask(077);
  EXPECT_TRUE(CreateStatusMemory(144));
  umask(old_mask);
  EXPECT_EQ(test::LookAtMemory()->info.st_mode & 07777, 0644U);
}

TEST_F(StatusMemory, KeepsItsWriteBitsUnderAnOpenUmask) {
  const mode_t old_mask = umask(0);
  EXPECT_TRUE(CreateStatusMemory(144));
  umask(old_mask);
  EXPECT_EQ(test::LookAtMemory()->info.st_mode & 07777, 0666U);
}

TEST_F(StatusMemory, ShowsThePublishedRecord) {
  const PrinterStatusRecord record = MakeRecord({.error_word = 0x123456, .serial = 200});
  ASSERT_TRUE(CreateStatusMemory(144));
  PublishStatus(record);
  EXPECT_EQ(test::LookAtMemory()->content, TextOf(record));
}

TEST_F(StatusMemory, ShowsTheLatestRecord) {
  ASSERT_TRUE(CreateStatusMemory(144));
  PublishStatus(MakeRecord({.serial = 1}));
  PublishStatus(MakeRecord({.serial = 2}));
  EXPECT_EQ(test::LookAtMemory()->content, TextOf(MakeRecord({.serial = 2})));
}

TEST_F(StatusMemory, CanBeReadBack) {
  ASSERT_TRUE(CreateStatusMemory(144));
  const PrinterStatusRecord record = MakeRecord({.serial = 3});
  PublishStatus(record);
  PrinterStatusRecord read = {};
  ReadPublishedStatus(read);
  EXPECT_EQ(read, record);
}

TEST_F(StatusMemory, WithoutItPublishingAndReadingDoNothing) {
  PublishStatus(MakeRecord());
  EXPECT_FALSE(test::LookAtMemory());
  const PrinterStatusRecord before = MakeRecord({.serial = 4});
  PrinterStatusRecord read = before;
  ReadPublishedStatus(read);
  EXPECT_EQ(read, before);
}

TEST_F(StatusMemory, ClosingRemovesTheName) {
  ASSERT_TRUE(CreateStatusMemory(144));
  CloseStatusMemory();
  EXPECT_FALSE(test::LookAtMemory());
}

TEST_F(StatusMemory, ClosingTwiceDoesNothingTheSecondTime) {
  ASSERT_TRUE(CreateStatusMemory(144));
  CloseStatusMemory();
  LeaveObject(10);
  CloseStatusMemory();
  EXPECT_TRUE(test::LookAtMemory());
}

TEST_F(StatusMemory, ClosingWithoutItDoesNothing) {
  LeaveObject(10);
  CloseStatusMemory();
  EXPECT_TRUE(test::LookAtMemory());
}

TEST_F(StatusMemory, PublishingAfterClosingDoesNothing) {
  ASSERT_TRUE(CreateStatusMemory(144));
  CloseStatusMemory();
  PublishStatus(MakeRecord());
  EXPECT_FALSE(test::LookAtMemory());
}

TEST_F(StatusMemory, CanBeMadeAgain) {
  ASSERT_TRUE(CreateStatusMemory(144));
  PublishStatus(MakeRecord());
  CloseStatusMemory();
  EXPECT_TRUE(CreateStatusMemory(144));
  EXPECT_EQ(test::LookAtMemory()->content, std::string(144, '\0'));
}

TEST_F(StatusMemory, TakesOverAnObjectOfAnotherSize) {
  for (const size_t size : {size_t{1}, size_t{144}, size_t{400}}) {
    LeaveObject(size);
    EXPECT_TRUE(CreateStatusMemory(144)) << size;
    EXPECT_EQ(test::LookAtMemory()->content, std::string(144, '\0')) << size;
    EXPECT_EQ(test::LookAtMemory()->info.st_mode & 0777, 0644U) << size;
    CloseStatusMemory();
  }
}

TEST_F(StatusMemory, OfAnotherUserIsRefused) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give an object away";
  LeaveObject(144, 65534);
  EXPECT_FALSE(CreateStatusMemory(144));
  PublishStatus(MakeRecord());
  EXPECT_EQ(test::LookAtMemory()->content, std::string(144, '#'));
}

TEST_F(StatusMemory, OneOfASmallerSizeHoldsTheRecordsBeginning) {
  ASSERT_TRUE(CreateStatusMemory(10));
  const PrinterStatusRecord record = MakeRecord({.serial = 5});
  PublishStatus(record);
  EXPECT_EQ(test::LookAtMemory()->content, TextOf(record).substr(0, 10));
}

TEST_F(StatusMemory, IsNeverLargerThanARecord) {
  ASSERT_TRUE(CreateStatusMemory(100'000));
  const PrinterStatusRecord record = MakeRecord({.serial = 6});
  PublishStatus(record);
  EXPECT_EQ(test::LookAtMemory()->content, TextOf(record));
}

TEST_F(StatusMemory, ThatWasCutShortIsNotRead) {
  ASSERT_TRUE(CreateStatusMemory(144));
  PublishStatus(MakeRecord({.serial = 7}));
  const PrinterStatusRecord before = MakeRecord({.serial = 8});
  for (const off_t size : {143, 1, 0}) {
    CutTo(size);
    PrinterStatusRecord read = before;
    ReadPublishedStatus(read);
    EXPECT_EQ(read, before) << size;
  }
}

// macOS cannot write to the object's descriptor.
#ifndef __APPLE__
TEST_F(StatusMemory, ThatWasCutShortGetsTheNextRecordWhole) {
  ASSERT_TRUE(CreateStatusMemory(144));
  PublishStatus(MakeRecord({.serial = 7}));
  for (const off_t size : {143, 1, 0}) {
    CutTo(size);
    const PrinterStatusRecord record = MakeRecord({.serial = static_cast<uint8_t>(10 + size)});
    PublishStatus(record);
    EXPECT_EQ(test::LookAtMemory()->content, TextOf(record)) << size;
    PrinterStatusRecord read = {};
    ReadPublishedStatus(read);
    EXPECT_EQ(read, record) << size;
  }
}
#endif

TEST_F(StatusMemory, WithoutItsNameItIsStillThisJobs) {
  ASSERT_TRUE(CreateStatusMemory(144));
  UnlinkStatusMemory();
  EXPECT_FALSE(test::LookAtMemory());
  PublishStatus(MakeRecord({.serial = 5}));
  PrinterStatusRecord record = {};
  ReadPublishedStatus(record);
  EXPECT_EQ(record, MakeRecord({.serial = 5}));
}

TEST_F(StatusMemory, TheNameIsRemovedOnce) {
  ASSERT_TRUE(CreateStatusMemory(144));
  UnlinkStatusMemory();
  LeaveObject(144);  // another job's
  UnlinkStatusMemory();
  CloseStatusMemory();
  EXPECT_TRUE(test::LookAtMemory());
}

}  // namespace
}  // namespace zr7700
