// Runs zr7700-printer between pipes.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <numeric>
#include <set>

#include "virtual_printer/child_process.h"
#include "virtual_printer/control_socket.h"
#include "virtual_printer/stream_builder.h"

namespace zr7700::printer {
namespace {

using testing::HasSubstr;

class Program : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(mkdtemp(folder_), nullptr);
    std::filesystem::create_directory(Path("out"));
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::string Path(const std::string& name) const { return std::string(folder_) + "/" + name; }

  nlohmann::json Report() const { return nlohmann::json::parse(TextOf(Path("report"))); }

  std::vector<std::string> Arguments(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> all = {ZR7700_PRINTER, "--out",        Path("out"),
                                    "--report",     Path("report"), "--status-fd=3"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }

  std::set<std::string> Pictures() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(Path("out"))) {
      names.insert(entry.path().filename());
    }
    return names;
  }

  std::string WriteScript(const std::string& text) const {
    std::ofstream(Path("script")) << text;
    return Path("script");
  }

  // Says one line on the control socket and returns the answer.
  std::string Order(const std::string& line) const {
    Descriptor caller(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, Path("control").c_str());
    for (int tries = 0; tries < 1000; ++tries) {
      if (connect(caller.number(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
        break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    const std::string text = line + "\n";
    EXPECT_GT(send(caller.number(), text.data(), text.size(), MSG_NOSIGNAL), 0);
    char answer[2000];
    const ssize_t count = recv(caller.number(), answer, sizeof answer, 0);
    return std::string(answer, count > 0 ? static_cast<size_t>(count) : 0);
  }

  char folder_[32] = "/tmp/zr7700-program-XXXXXX";
};

bool IsWellFormed(const uint8_t* record) {
  const unsigned sum = std::accumulate(record + 1, record + 142, 0u);
  return record[0] == 1 && record[1] == 0x8E && record[2] == 0x5A &&
         record[142] == static_cast<uint8_t>(sum) && record[143] == 4;
}

// The next record; the test fails when it is not well formed.
Bytes NextRecord(ChildProcess& printer) {
  Bytes record = printer.ReadBack(144);
  EXPECT_EQ(record.size(), 144u);
  record.resize(144);
  EXPECT_TRUE(IsWellFormed(record.data()));
  return record;
}

// Reads records until one has `value` at `at`, at most 400.
Bytes AwaitRecord(ChildProcess& printer, size_t at, uint8_t value) {
  for (int i = 0; i < 400; ++i) {
    Bytes record = NextRecord(printer);
    if (record[at] == value || testing::Test::HasFailure()) return record;
  }
  ADD_FAILURE() << "no record has " << int{value} << " at " << at;
  return Bytes(144);
}

TEST_F(Program, PrintsEveryDiscAndReports) {
  StreamBuilder stream('G');
  stream.WholePage().WholePage({.media = 7});
  ChildProcess printer(Arguments(), folder_);
  ASSERT_TRUE(printer.Write(stream.bytes()));
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 0);
  EXPECT_EQ(Pictures(), (std::set<std::string>{"disc-001.png", "disc-001-small.png", "disc-002.png",
                                               "disc-002-small.png"}));
  const auto report = Report();
  EXPECT_EQ(report["pages"], 2);
  EXPECT_EQ(report["violation_count"], 0);
  const auto& disc = report["discs"][0];
  EXPECT_EQ(disc["drops"]["cyan"], (nlohmann::json{{"small", 0}, {"medium", 0}, {"large", 1}}));
  EXPECT_EQ(disc["ink_picolitres"], (nlohmann::json{{"cyan", 12}, {"magenta", 0}, {"yellow", 0}}));
  EXPECT_EQ(disc["bounding_box"],
            (nlohmann::json{{"left", 0}, {"top", 0}, {"right", 0}, {"bottom", 0}}));
  EXPECT_EQ(disc["dots_outside_disc"], 1) << "a corner is no disc";
}

TEST_F(Program, AViolationFailsTheRunAndIsReportedWithItsOffset) {
  StreamBuilder stream('H');
  stream.WholePage().Raw({7});
  const uint64_t offset = stream.offset() - 1;
  ChildProcess printer(Arguments(), folder_);
  ASSERT_TRUE(printer.Write(stream.bytes()));
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 1);
  EXPECT_THAT(printer.Errors(), HasSubstr("zr7700-printer: Byte " + std::to_string(offset) +
                                          ": An item must begin with 0x1B"));
  EXPECT_EQ(Report()["violations"][0]["offset"], offset);
  EXPECT_EQ(Pictures().size(), 2u) << "the page itself was right";
}

TEST_F(Program, SendsTwentyRecordsASecond) {
  ChildProcess printer(Arguments(), folder_);
  NextRecord(printer);
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 40; ++i) EXPECT_EQ(NextRecord(printer)[29], 'I');
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
  // 40 periods of 50 ms; 16 a second at the least.
  EXPECT_GT(time.count(), 1.9);
  EXPECT_LT(time.count(), 40 / 16.0);
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 0);
}

TEST_F(Program, GoesBusyAndIdleAndCountsItsInk) {
  StreamBuilder stream('G');
  stream.WholePage();
  ChildProcess printer(Arguments({"--pace", "0.5s"}), folder_);
  EXPECT_EQ(NextRecord(printer)[29], 'I');
  ASSERT_TRUE(printer.Write(stream.bytes()));
  const Bytes busy = AwaitRecord(printer, 29, 'B');
  EXPECT_EQ(busy[26], 'H');
  const Bytes idle = AwaitRecord(printer, 29, 'I');
  EXPECT_EQ(idle[26], 'I');
  // One large drop: 12 picolitres.
  EXPECT_EQ(Bytes(idle.begin() + 49, idle.begin() + 61),
            (Bytes{0, 0, 0, 12, 0, 0, 0, 0, 0, 0, 0, 0}));
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 0);
}

TEST_F(Program, WaitsForDiscsAndIsRefilled) {
  StreamBuilder stream('G');
  stream.WholePage().WholePage();
  ChildProcess printer(Arguments({"--discs", "1", "--control", Path("control")}), folder_);
  ASSERT_TRUE(printer.Write(stream.bytes()));
  printer.CloseInput();
  const Bytes empty = AwaitRecord(printer, 30, 0x24);
  EXPECT_EQ(AwaitRecord(printer, 29, 'I')[30], 0x24);
  EXPECT_THAT(Order("status"), HasSubstr("idle, cartridge Q, 0 discs, error word 0x24, ink 12 0 0, "
                                         "page 2 waits, 1 out, 0 violations\n"));
  EXPECT_TRUE(printer.Runs());
  EXPECT_EQ(Pictures().size(), 2u);
  EXPECT_EQ(Order("bin 25"), "ok\n");
  EXPECT_EQ(printer.Wait(), 0);
  EXPECT_EQ(Pictures().size(), 4u);
  EXPECT_FALSE(std::filesystem::exists(Path("control")));
}

TEST_F(Program, ObeysItsControlSocket) {
  ChildProcess printer(Arguments({"--control", Path("control")}), folder_);
  EXPECT_EQ(Order("cartridge U"), "ok\n");
  AwaitRecord(printer, 98, 'U');
  EXPECT_EQ(Order("align on"), "ok\n");
  AwaitRecord(printer, 99, 1);
  EXPECT_EQ(Order("ink low"), "ok\n");
  EXPECT_EQ(AwaitRecord(printer, 30, 0x10)[98], 'U');
  EXPECT_EQ(Order("bin 0"), "ok\n");
  AwaitRecord(printer, 30, 0x34);
  EXPECT_EQ(Order("explode"), "error: There is no command \"explode\".\n");
  EXPECT_EQ(Order("at 0.1s cartridge none"), "ok\n");
  AwaitRecord(printer, 98, 0x20);
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 0);
}

TEST_F(Program, ObeysItsFaultScript) {
  StreamBuilder stream('G');
  stream.WholePage().WholePage();
  const std::string script =
      WriteScript("cartridge invalid\nat 0.3s cartridge P\nafter page 1 align on\n");
  ChildProcess printer(Arguments({"--script", script}), folder_);
  EXPECT_EQ(NextRecord(printer)[98], 'X');
  ASSERT_TRUE(printer.Write(stream.bytes()));
  EXPECT_EQ(AwaitRecord(printer, 98, 'P')[99], 0);
  AwaitRecord(printer, 99, 1);
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 0);
}

TEST_F(Program, SpoilsItsRecordsWhenTold) {
  const std::string script = WriteScript("misalign 37\nbadsum 1\nat 0.2s split 100\n");
  ChildProcess printer(Arguments({"--script", script}), folder_);
  EXPECT_EQ(printer.ReadBack(37).back(), 4) << "the tail of a record";
  EXPECT_FALSE(IsWellFormed(printer.ReadBack(144).data()));
  for (int i = 0; i < 10; ++i) NextRecord(printer);  // the pieces of a split record still join
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 0);
}

TEST_F(Program, ADeafListenerDoesNotStopIt) {
  StreamBuilder stream('G');
  stream.WholePage();
  // The pipe is full after 64 KiB.
  ChildProcess printer(Arguments({"--script", WriteScript("noise 65536\nat 0.1s noise 65536\n")}),
                       folder_);
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  ASSERT_TRUE(printer.Write(stream.bytes()));
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 0);
}

TEST_F(Program, WhatIsWrongWithItsOptionsIsSaid) {
  const struct {
    std::vector<std::string> more;
    std::string sentence;
  } rows[] = {
      {{"--out", "/nowhere/at/all"},
       "The folder /nowhere/at/all cannot take pictures: No such file or directory."},
      {{"--out", "/dev/null"}, "The folder /dev/null cannot take pictures: Not a directory."},
      {{"--discs", "few"}, "\"discs\" takes a number from 0 to 1000000, not \"few\"."},
      {{"--discs"}, "\"discs\" takes a number from 0 to 1000000, not \"\"."},
      {{"--status-fd", "x"}, "\"status-fd\" takes the number of an open descriptor."},
      {{"--status-fd", "99"}, "\"status-fd\" takes the number of an open descriptor."},
      {{"--name", "a\nb"}, "\"name\" takes a name without \"/\" or control characters, not"},
      {{"--report", "/nowhere/report"},
       "The folder /nowhere cannot take a report: No such file or directory."},
      {{"--colour", "red"}, "There is no setting \"colour\"."},
      {{"picture.png"}, "There is no argument \"picture.png\"."},
      {{"--script", "/nowhere"}, "The file /nowhere cannot be read: No such file or directory."},
      {{"--control", "/nowhere/control"},
       "The control socket /nowhere/control cannot be made: No such file or directory."},
  };
  for (const auto& row : rows) {
    ChildProcess printer(Arguments(row.more), folder_);
    printer.CloseInput();
    EXPECT_EQ(printer.Wait(), 2);
    EXPECT_THAT(printer.Errors(), testing::StartsWith("zr7700-printer: " + row.sentence));
  }
}

TEST_F(Program, AStatusDescriptorThatIsNotOpenIsRefused) {
  ChildProcess printer(Arguments(), folder_, {.back_channel = false});
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 2);
  EXPECT_TRUE(Pictures().empty());
}

TEST_F(Program, AClosedInputIsAnError) {
  ChildProcess printer(Arguments({"--control", Path("control")}), folder_, {.closed = {0}});
  EXPECT_EQ(printer.Wait(), 1);
  EXPECT_EQ(printer.Errors(),
            "zr7700-printer: The print data cannot be read: Bad file descriptor.\n");
}

TEST_F(Program, AClosedStandardErrorIsNoPicturesDescriptor) {
  StreamBuilder stream('G');
  stream.WholePage();
  ChildProcess whole(Arguments({"--name", "whole"}), folder_);
  ASSERT_TRUE(whole.Write(stream.bytes()));
  whole.CloseInput();
  EXPECT_EQ(whole.Wait(), 0);
  const std::string script = WriteScript("on page 1 status\non page 1 0.01s status\n");
  ChildProcess printer(Arguments({"--script", script}), folder_, {.closed = {1, 2}});
  ASSERT_TRUE(printer.Write(stream.bytes()));
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 0);
  EXPECT_EQ(TextOf(Path("out/disc-001.png")), TextOf(Path("out/whole-001.png")));
}

TEST_F(Program, SaysHowItIsUsedWhereverItIsAsked) {
  ChildProcess printer(Arguments({"--help", "--help"}), folder_);
  EXPECT_EQ(printer.Wait(), 0);
  EXPECT_THAT(printer.Output(), testing::StartsWith("Usage: zr7700-printer "));
}

TEST_F(Program, SwitchedOffItSpoilsItsDiscAndReports) {
  for (const int number : {SIGTERM, SIGINT}) {
    StreamBuilder stream('G');
    stream.Header().DocumentStart().PageStart().Feed();
    ChildProcess printer(Arguments({"--control", Path("control")}), folder_);
    ASSERT_TRUE(printer.Write(stream.bytes()));
    AwaitRecord(printer, 29, 'B');
    printer.Signal(number);
    EXPECT_EQ(printer.Wait(), 1);
    const std::string offset = std::to_string(stream.offset());
    EXPECT_THAT(printer.Errors(),
                HasSubstr("Byte " + offset + ": The stream ends inside a page.\n"));
    EXPECT_EQ(Report()["discs"][0]["spoilt"], true);
    EXPECT_EQ(Report()["given_up"], true);
    EXPECT_EQ(Pictures(), (std::set<std::string>{"disc-001.png", "disc-001-small.png"}));
    EXPECT_FALSE(std::filesystem::exists(Path("control")));
  }
}

TEST_F(Program, SwitchedOffItWaitsForNoDisc) {
  StreamBuilder stream('G');
  stream.Header().DocumentStart().PageStart().Feed();
  ChildProcess printer(Arguments({"--discs", "0"}), folder_);
  ASSERT_TRUE(printer.Write(stream.bytes()));
  AwaitRecord(printer, 30, 0x24);
  printer.Signal(SIGTERM);
  EXPECT_EQ(printer.Wait(), 1);
  EXPECT_TRUE(Pictures().empty());
  EXPECT_EQ(Report()["given_up"], true);
}

TEST_F(Program, OrdersKeepTheirTimeAtALowRate) {
  ChildProcess printer(Arguments({"--rate", "1", "--script", WriteScript("at 0.3s bin 7\n")}),
                       folder_);
  printer.ReadBack(144 * 3);
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 0);
  const auto status = Report()["status"];
  const auto line = std::find_if(status.begin(), status.end(), [](const auto& told) {
    return told["text"] == "idle, cartridge Q, 7 discs, no error";
  });
  ASSERT_NE(line, status.end()) << status;
  const double time_s = (*line)["time_s"];
  EXPECT_GE(time_s, 0.3);
  EXPECT_LT(time_s, 0.9) << "and not with the next record";
}

// Page 2 begins while the disc of page 1 is not out yet.
TEST_F(Program, OrdersAfterAPageFollowThatPageWhenTheNextHasBegun) {
  StreamBuilder stream('G');
  stream.Header().DocumentStart().PageStart().Feed();
  stream.PageStart({.number = 2}).Feed();
  const std::string script = WriteScript("after page 1 bin 7\n");
  ChildProcess printer(Arguments({"--script", script}), folder_);
  ASSERT_TRUE(printer.Write(stream.bytes()));
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 1);
  // 7, of which page 2 takes one.
  EXPECT_THAT(TextOf(Path("report")), HasSubstr("busy, cartridge Q, 6 discs, no error"));
  EXPECT_THAT(printer.Errors(), testing::Not(HasSubstr("Waiting:")));
}

// A drop told for column 0 of a reverse pass lies 5 dots further right.
TEST_F(Program, APageKeepsTheAlignmentItTookItsDiscWith) {
  StreamBuilder stream('G');
  stream.Header().DocumentStart().PageStart({.direction = 1}).Feed();
  stream.Pass(0, /*reverse=*/true).Row(0, 'C', 0, "3").PageEnd().DocumentEnd();
  const std::string script = WriteScript("on page 1 alignment 5 0\n");
  ChildProcess printer(Arguments({"--script", script}), folder_);
  ASSERT_TRUE(printer.Write(stream.bytes()));
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 0);
  const auto box = Report()["discs"][0]["bounding_box"];
  EXPECT_EQ(box["left"], 5);
  EXPECT_EQ(box["right"], 5);
}

TEST_F(Program, AWrongPrintHeaderSetsNoWarningLevel) {
  // Above the cartridge's own level of 190000000; the record shows error bit 0x10 only below.
  Bytes header = HeaderBytes();
  header[6] = 0x15;
  StreamBuilder stream('G');
  stream.Raw(header);
  ChildProcess printer(Arguments({"--control", Path("control")}), folder_);
  ASSERT_TRUE(printer.Write(stream.bytes()));
  EXPECT_EQ(Order("ink 200000000"), "ok\n");
  AwaitRecord(printer, 30, 0x10);
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 1);
}

TEST_F(Program, AFullDiskIsSaidAndLeavesNoPicture) {
  StreamBuilder stream('G');
  stream.WholePage();
  ChildProcess printer(Arguments(), folder_, {.small_disk = true});
  ASSERT_TRUE(printer.Write(stream.bytes()));
  printer.CloseInput();
  EXPECT_EQ(printer.Wait(), 1);
  EXPECT_THAT(printer.Errors(), HasSubstr("disc-001.png cannot be written: File too large."));
  EXPECT_TRUE(Pictures().empty());
}

}  // namespace
}  // namespace zr7700::printer
