// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/color_table.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <lcms2.h>
#include <lcms2_plugin.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>

#include "reference_engine/test_engine_host.h"
#include "reference_engine/test_failing_memory.h"

namespace zr7700::reference_engine {
namespace {

namespace fs = std::filesystem;

InkNode NodeAt(const ColorTable& table, uint32_t red, uint32_t green, uint32_t blue) {
  return table.nodes()[(red * kTableNodes + green) * kTableNodes + blue];
}
int Code(InkNode node, int plane) { return static_cast<int>(node >> (8 * plane) & 0xFF); }

class ColorTableTest : public ::testing::Test {
 protected:
  ColorTableTest()
      : scratch_(fs::temp_directory_path() /
                 ("color_table_test." + std::to_string(getpid()) + ".icc")) {
    std::ifstream file(standard_, std::ios::binary);
    bytes_.assign(std::istreambuf_iterator<char>(file), {});
  }
  ~ColorTableTest() override { fs::remove(scratch_); }

  static bool Load(const std::string& path, ColorTable* table) {
    return table->Load(Family::kGranite, path);
  }
  // Whether a table with these bytes is taken.
  bool Takes(const std::string& bytes) const {
    std::ofstream(scratch_, std::ios::binary) << bytes;
    ColorTable table;
    const bool taken = Load(scratch_, &table);
    EXPECT_EQ(table.loaded(), taken);
    return taken;
  }

  const fs::path scratch_;
  const std::string standard_ = testing::StandardTable(testing::kGraniteName);
  const std::string photo_ = testing::PhotoTable(testing::kGraniteName);
  // The standard table's file.
  std::string bytes_;
};

TEST_F(ColorTableTest, WhiteIsBareAndBlackIsAllInk) {
  ColorTable table;
  ASSERT_TRUE(Load(standard_, &table));
  EXPECT_EQ(NodeAt(table, 32, 32, 32), 0U);
  EXPECT_EQ(NodeAt(table, 0, 0, 0), 0xFFFFFFU);
}

TEST_F(ColorTableTest, InksAnswerTheirOwnChannels) {
  ColorTable table;
  ASSERT_TRUE(Load(standard_, &table));
  const InkNode cyan = NodeAt(table, 0, 32, 32);
  EXPECT_EQ(Code(cyan, 0), 255);
  EXPECT_LT(Code(cyan, 1), 16);
  EXPECT_LT(Code(cyan, 2), 16);
  // Along the greys every ink falls as the colour rises.
  for (uint32_t level = 1; level < kTableNodes; ++level)
    for (int plane = 0; plane < 3; ++plane)
      EXPECT_LE(Code(NodeAt(table, level, level, level), plane),
                Code(NodeAt(table, level - 1, level - 1, level - 1), plane));
}

TEST_F(ColorTableTest, RefusesWhatIsNoTable) {
  ColorTable table;
  EXPECT_FALSE(Load(scratch_, &table));
  EXPECT_FALSE(Load(fs::temp_directory_path(), &table));
  ASSERT_EQ(mkfifo(scratch_.c_str(), 0600), 0);
  EXPECT_FALSE(Load(scratch_, &table));
  fs::remove(scratch_);
  EXPECT_FALSE(Takes(""));
  EXPECT_FALSE(Takes(std::string(400, '\0')));
}

TEST_F(ColorTableTest, RefusesAnotherKindOfProfileThoughItIsWhole) {
  cmsHPROFILE profile = cmsCreate_sRGBProfile();
  ASSERT_TRUE(cmsMD5computeID(profile) && cmsSaveProfileToFile(profile, scratch_.c_str()));
  cmsCloseProfile(profile);
  ColorTable table;
  EXPECT_FALSE(Load(scratch_, &table));
}

TEST_F(ColorTableTest, RefusesTheOtherFamilysTable) {
  const std::string heron = testing::StandardTable(testing::kHeronName);
  ColorTable table;
  EXPECT_FALSE(table.Load(Family::kGranite, heron));
  EXPECT_FALSE(table.Load(Family::kHeron, standard_));
  EXPECT_TRUE(table.Load(Family::kHeron, heron));
}

TEST_F(ColorTableTest, RefusesAnyChangedBit) {
  ASSERT_TRUE(Takes(bytes_));
  // Every byte of the header, the tag table and the texts, then places all over the grid.
  for (size_t place = 0; place < bytes_.size(); place += place < 700 ? 1 : 1009) {
    std::string damaged = bytes_;
    damaged[place] = static_cast<char>(damaged[place] ^ (1 << place % 8));
    EXPECT_FALSE(Takes(damaged)) << place;
  }
  bytes_.back() = static_cast<char>(bytes_.back() ^ 1);
  EXPECT_FALSE(Takes(bytes_));
}

TEST_F(ColorTableTest, RefusesAGridThatIsOverwritten) {
  for (const size_t begin : {size_t{700}, size_t{4096}, bytes_.size() - 100}) {
    std::string damaged = bytes_;
    std::fill(damaged.begin() + static_cast<ptrdiff_t>(begin), damaged.end(), '\0');
    EXPECT_FALSE(Takes(damaged)) << begin;
    uint32_t random = 1;
    for (size_t i = begin; i < damaged.size(); ++i) {
      random = random * 1664525 + 1013904223;
      damaged[i] = static_cast<char>(random >> 24);
    }
    EXPECT_FALSE(Takes(damaged)) << begin;
  }
}

TEST_F(ColorTableTest, RefusesATableOfAnotherLength) {
  for (const size_t length :
       {size_t{1}, size_t{127}, size_t{128}, size_t{131}, size_t{132}, size_t{200}, size_t{500},
        size_t{5000}, size_t{200000}, bytes_.size() - 2, bytes_.size() - 1})
    EXPECT_FALSE(Takes(bytes_.substr(0, length))) << length;
  EXPECT_FALSE(Takes(bytes_ + '\0'));
}

// The table with the ID that the ICC format asks for: the MD5 of itself with zeros in its place.
std::string Sealed(std::string bytes) {
  bytes.replace(84, 16, 16, '\0');
  cmsHANDLE const sum = cmsMD5alloc(nullptr);
  cmsMD5add(sum, reinterpret_cast<const cmsUInt8Number*>(bytes.data()),
            static_cast<cmsUInt32Number>(bytes.size()));
  cmsProfileID id;
  cmsMD5finish(&id, sum);
  std::memcpy(&bytes[84], id.ID8, sizeof id.ID8);
  return bytes;
}

TEST_F(ColorTableTest, RefusesALengthThatTheHeaderDoesNotTell) {
  EXPECT_EQ(Sealed(bytes_), bytes_);
  EXPECT_FALSE(Takes(Sealed(bytes_ + '\0')));
  bytes_.pop_back();
  EXPECT_FALSE(Takes(Sealed(bytes_)));
}

TEST_F(ColorTableTest, RefusesATableOfAnotherDescription) {
  const size_t place = bytes_.find("ZR7700 Granite, ");
  ASSERT_NE(place, std::string::npos);
  bytes_[place + 14] = '.';
  EXPECT_FALSE(Takes(Sealed(bytes_)));
}

TEST_F(ColorTableTest, RefusesATableOfAnotherKind) {
  // Where the header has the class, the colour space of the input and that of the output.
  const std::pair<size_t, const char*> kKinds[] = {{12, "mntr"}, {16, "CMY "}, {20, "RGB "}};
  for (const auto& [place, kind] : kKinds) {
    std::string other = bytes_;
    EXPECT_FALSE(Takes(Sealed(other.replace(place, 4, kind)))) << kind;
  }
}

TEST_F(ColorTableTest, RefusesATableWithoutItsId) {
  // Where the header of an ICC profile carries it.
  bytes_.replace(84, 16, 16, '\0');
  EXPECT_FALSE(Takes(bytes_));
}

TEST_F(ColorTableTest, KeepsItsTableWhenAnotherIsBad) {
  ColorTable table;
  ASSERT_TRUE(Load(standard_, &table));
  std::ofstream(scratch_) << "no table";
  EXPECT_FALSE(Load(scratch_, &table));
  EXPECT_TRUE(table.loaded());
  EXPECT_EQ(NodeAt(table, 0, 0, 0), 0xFFFFFFU);
}

bool SameNodes(const ColorTable& a, const ColorTable& b) {
  return std::memcmp(a.nodes(), b.nodes(),
                     sizeof(InkNode) * kTableNodes * kTableNodes * kTableNodes) == 0;
}

TEST_F(ColorTableTest, ALackOfMemoryLeavesTheTableThatItHeld) {
  ColorTable expected;
  ASSERT_TRUE(Load(standard_, &expected));
  ColorTable other;
  ASSERT_TRUE(Load(photo_, &other));
  ASSERT_FALSE(SameNodes(expected, other));
  int failures = 0;
  for (bool failed = true; failed; failures += failed) {
    ColorTable table;
    ASSERT_TRUE(Load(standard_, &table));
    {
      const testing::FailingAllocation failing(failures + 1);
      try {
        Load(photo_, &table);
      } catch (const std::bad_alloc&) {
      }
      failed = failing.happened();
    }
    EXPECT_TRUE(SameNodes(table, failed ? expected : other)) << failures;
    // Neither does it take the one for the other later on.
    ASSERT_TRUE(Load(standard_, &table));
    EXPECT_TRUE(SameNodes(table, expected)) << failures;
  }
  EXPECT_GT(failures, 1);
}

TEST_F(ColorTableTest, ReadsAChangedFileAgain) {
  ColorTable table;
  ASSERT_TRUE(Takes(bytes_));
  ASSERT_TRUE(Load(scratch_, &table));
  fs::resize_file(scratch_, 300);
  EXPECT_FALSE(Load(scratch_, &table));
}

TEST_F(ColorTableTest, TellsChangesApartWithinASecondOfAnyYear) {
  // The year 2300: more nanoseconds than 63 bits hold.
  constexpr time_t kFarSeconds = 10413792000;
  const auto set_time = [&](long nanoseconds) {
    const timespec times[2] = {{kFarSeconds, nanoseconds}, {kFarSeconds, nanoseconds}};
    return utimensat(AT_FDCWD, scratch_.c_str(), times, 0);
  };
  ASSERT_TRUE(Takes(bytes_));
  ASSERT_EQ(set_time(5), 0);
  struct stat status = {};
  ASSERT_EQ(stat(scratch_.c_str(), &status), 0);
  if (status.st_mtim.tv_sec != kFarSeconds) GTEST_SKIP() << "no such times on this file system";
  ColorTable table;
  ASSERT_TRUE(Load(scratch_, &table));
  // The same length, the same second; only the nanoseconds tell.
  bytes_.back() = static_cast<char>(bytes_.back() ^ 1);
  std::ofstream(scratch_, std::ios::binary) << bytes_;
  ASSERT_EQ(set_time(5), 0);
  EXPECT_TRUE(Load(scratch_, &table));
  ASSERT_EQ(set_time(6), 0);
  EXPECT_FALSE(Load(scratch_, &table));
}

}  // namespace
}  // namespace zr7700::reference_engine
