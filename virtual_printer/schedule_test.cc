// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/schedule.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

namespace zr7700::printer {
namespace {

std::vector<uint32_t> Bins(const std::vector<Command>& commands) {
  std::vector<uint32_t> bins;
  for (const Command& command : commands) bins.push_back(command.numbers[0]);
  return bins;
}

Schedule ScheduleOf(std::string_view text) {
  std::string error;
  auto script = ParseScript(text, error);
  EXPECT_TRUE(script.has_value()) << error;
  return Schedule(script.value_or(std::vector<ScheduledCommand>{}));
}

using Numbers = std::vector<uint32_t>;

TEST(Script, CommentsAndEmptyLinesCountAsLines) {
  std::string error;
  const auto script = ParseScript("# a title\n\nbin 3 # three\n  at 2.5s bin 4\n", error);
  ASSERT_TRUE(script.has_value()) << error;
  ASSERT_EQ(script->size(), 2u);
  EXPECT_EQ((*script)[0].trigger, Trigger::kAtOnce);
  EXPECT_EQ((*script)[0].command.numbers[0], 3u);
  EXPECT_EQ((*script)[1].trigger, Trigger::kTime);
  EXPECT_EQ((*script)[1].delay_s, 2.5);
  EXPECT_FALSE(ParseScript("\n# x\nbin three", error).has_value());
  EXPECT_EQ(error, "Line 3: \"bin\" takes a number of discs, 0 to 1000000.");
}

TEST(Script, PagesWithAndWithoutADelay) {
  std::string error;
  const auto on = ParseScheduledCommand("on page 2 cartridge none", error);
  ASSERT_TRUE(on.has_value()) << error;
  EXPECT_EQ(on->trigger, Trigger::kOnPage);
  EXPECT_EQ(on->page, 2u);
  EXPECT_EQ(on->delay_s, 0);
  const auto after = ParseScheduledCommand("after page 3 1.5s bin 9", error);
  ASSERT_TRUE(after.has_value()) << error;
  EXPECT_EQ(after->trigger, Trigger::kAfterPage);
  EXPECT_EQ(after->page, 3u);
  EXPECT_EQ(after->delay_s, 1.5);
}

TEST(Script, BadTriggersGetASentence) {
  std::string error;
  for (const char* line : {"at", "at soon bin 1", "at -1s bin 1"}) {
    EXPECT_FALSE(ParseScheduledCommand(line, error).has_value()) << line;
    EXPECT_EQ(error, "\"at\" takes a time such as 2.5s.") << line;
  }
  for (const char* line : {"on", "on page", "on page 0 bin 1", "on disc 1 bin 1", "on page x"}) {
    EXPECT_FALSE(ParseScheduledCommand(line, error).has_value()) << line;
    EXPECT_EQ(error, "\"on\" takes \"page\" and a page number from 1.") << line;
  }
  EXPECT_FALSE(ParseScheduledCommand("at 1s", error).has_value());
  EXPECT_EQ(error, "There is no command.");
}

TEST(Schedule, TimesComeInTheirOrderAndOnce) {
  Schedule schedule = ScheduleOf("at 2s bin 2\nat 1s bin 1\nbin 0\nat 2s bin 3\nat 9s bin 9");
  EXPECT_EQ(Bins(schedule.TakeDue(0)), (Numbers{0}));
  EXPECT_EQ(Bins(schedule.TakeDue(0.999)), (Numbers{}));
  EXPECT_EQ(Bins(schedule.TakeDue(2)), (Numbers{1, 2, 3}));
  EXPECT_EQ(Bins(schedule.TakeDue(8)), (Numbers{}));
}

TEST(Schedule, PagesStartTheirOrders) {
  Schedule schedule = ScheduleOf("on page 2 bin 2\nafter page 2 0.5s bin 5\non page 1 1s bin 1");
  EXPECT_EQ(Bins(schedule.TakeDue(100)), (Numbers{}));
  schedule.PageBegan(1, 100);
  EXPECT_EQ(Bins(schedule.TakeDue(100.9)), (Numbers{}));
  EXPECT_EQ(Bins(schedule.TakeDue(101)), (Numbers{1}));
  schedule.PageBegan(2, 102);
  EXPECT_EQ(Bins(schedule.TakeDue(102)), (Numbers{2}));
  schedule.PageEnded(2, 103);
  EXPECT_EQ(Bins(schedule.TakeDue(103.25)), (Numbers{}));
  EXPECT_EQ(Bins(schedule.TakeDue(103.5)), (Numbers{5}));
}

TEST(Schedule, AddedOrdersAreHeardToo) {
  Schedule schedule;
  std::string error;
  schedule.Add(*ParseScheduledCommand("bin 7", error));
  EXPECT_EQ(Bins(schedule.TakeDue(0)), (Numbers{7}));
  EXPECT_EQ(Bins(schedule.TakeDue(0)), (Numbers{}));
}

class ScriptFile : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(mkdtemp(folder_), nullptr); }
  void TearDown() override {
    unlink(Path().c_str());
    rmdir(folder_);
  }
  std::string Path() const { return std::string(folder_) + "/script"; }

  char folder_[32] = "/tmp/zr7700-script-XXXXXX";
};

TEST_F(ScriptFile, IsLoadedOrNamedInTheSentence) {
  std::string error;
  EXPECT_FALSE(LoadScript(Path(), error).has_value());
  EXPECT_EQ(error, "The file " + Path() + " cannot be read: No such file or directory.");
  std::ofstream(Path()) << "bin 1\nbins 2\n";
  EXPECT_FALSE(LoadScript(Path(), error).has_value());
  EXPECT_EQ(error,
            "The fault script " + Path() + " is wrong. Line 2: There is no command \"bins\".");
  std::ofstream(Path()) << "bin 1\nalign on\n";
  const auto script = LoadScript(Path(), error);
  ASSERT_TRUE(script.has_value()) << error;
  EXPECT_EQ(script->size(), 2u);
}

TEST_F(ScriptFile, AFifoOrAnEndlessFileIsRefused) {
  std::string error;
  ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
  EXPECT_FALSE(LoadScript(Path(), error).has_value());
  EXPECT_FALSE(LoadScript("/dev/zero", error).has_value());
  unlink(Path().c_str());
  std::ofstream(Path()) << std::string((1 << 20) + 1, '#');
  EXPECT_FALSE(LoadScript(Path(), error).has_value());
  EXPECT_EQ(error, "The file " + Path() + " cannot be read: File too large.");
}

}  // namespace
}  // namespace zr7700::printer
