#include "reference_engine/color_table.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "reference_engine/testing/engine_host.h"

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
                 ("color_table_test." + std::to_string(getpid()) + ".icc")) {}
  ~ColorTableTest() override { fs::remove(scratch_); }
  fs::path scratch_;
  const std::string standard_ = testing::StandardTable(testing::kGraniteName);
};

TEST_F(ColorTableTest, WhiteIsBareAndBlackIsAllInk) {
  ColorTable table;
  ASSERT_TRUE(table.Load(standard_));
  EXPECT_EQ(NodeAt(table, 32, 32, 32), 0U);
  EXPECT_EQ(NodeAt(table, 0, 0, 0), 0xFFFFFFU);
}

TEST_F(ColorTableTest, InksAnswerTheirOwnChannels) {
  ColorTable table;
  ASSERT_TRUE(table.Load(standard_));
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
  EXPECT_FALSE(table.Load(scratch_));
  EXPECT_FALSE(table.Load(fs::temp_directory_path()));
  std::ofstream(scratch_) << std::string(400, '\0');
  EXPECT_FALSE(table.Load(scratch_));
  EXPECT_FALSE(table.loaded());
}

TEST_F(ColorTableTest, SurvivesATableCutAnywhere) {
  ColorTable table;
  for (const uintmax_t length : {1U, 127U, 128U, 131U, 132U, 200U, 500U, 5000U, 200000U}) {
    fs::copy_file(standard_, scratch_, fs::copy_options::overwrite_existing);
    fs::resize_file(scratch_, length);
    EXPECT_FALSE(table.Load(scratch_)) << length;
  }
}

TEST_F(ColorTableTest, SurvivesDamageInTheTablesOfContents) {
  // The header, the tag table and the beginning of the grid; whatever still loads leaves white
  // bare.
  for (int place = 0; place < 700; place += 3) {
    fs::copy_file(standard_, scratch_, fs::copy_options::overwrite_existing);
    std::fstream file(scratch_, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(place);
    file.put('\xFF');
    file.close();
    ColorTable table;
    if (table.Load(scratch_)) {
      EXPECT_EQ(NodeAt(table, 32, 32, 32), 0U) << place;
    } else {
      EXPECT_FALSE(table.loaded()) << place;
    }
  }
}

TEST_F(ColorTableTest, KeepsItsTableWhenAnotherIsBad) {
  ColorTable table;
  ASSERT_TRUE(table.Load(standard_));
  std::ofstream(scratch_) << "no table";
  EXPECT_FALSE(table.Load(scratch_));
  EXPECT_TRUE(table.loaded());
  EXPECT_EQ(NodeAt(table, 0, 0, 0), 0xFFFFFFU);
}

TEST_F(ColorTableTest, ReadsAChangedFileAgain) {
  ColorTable table;
  fs::copy_file(standard_, scratch_, fs::copy_options::overwrite_existing);
  ASSERT_TRUE(table.Load(scratch_));
  fs::resize_file(scratch_, 300);
  EXPECT_FALSE(table.Load(scratch_));
}

}  // namespace
}  // namespace zr7700::reference_engine
