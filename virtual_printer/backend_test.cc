// Runs the backend zr7700virtual as CUPS runs it.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "virtual_printer/child_process.h"
#include "virtual_printer/stream_builder.h"

namespace zr7700::printer {
namespace {

using testing::HasSubstr;

// What CUPS makes of a backend's exit status.
constexpr int kOk = 0;
constexpr int kFailed = 1;
constexpr int kStopQueue = 4;

class Backend : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(mkdtemp(folder_), nullptr);
    std::filesystem::create_directory(Path("spool"));
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::string Path(const std::string& name) const { return std::string(folder_) + "/" + name; }

  ChildSetup Uri(const std::string& parameters = "") const {
    return {.environment = {"DEVICE_URI=zr7700virtual:" + Path("spool") + parameters}};
  }

  static std::vector<std::string> Job(const std::vector<std::string>& file = {},
                                      const std::string& copies = "1") {
    std::vector<std::string> all = {ZR7700_BACKEND,         "12",   "anna",
                                    "A title\nERROR: none", copies, ""};
    all.insert(all.end(), file.begin(), file.end());
    return all;
  }

  // A file with a stream of one page.
  void WritePage(const std::string& name) const {
    StreamBuilder stream('G');
    stream.WholePage();
    std::ofstream(Path(name), std::ios::binary)
        .write(reinterpret_cast<const char*>(stream.bytes().data()),
               static_cast<std::streamsize>(stream.bytes().size()));
  }

  std::set<std::string> Files() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(Path("spool"))) {
      names.insert(entry.path().filename());
    }
    return names;
  }

  const std::set<std::string> kOneDisc = {"job-12-disc-001.png", "job-12-disc-001-small.png",
                                          "job-12-report.json"};

  char folder_[32] = "/tmp/zr7700-backend-XXXXXX";
};

TEST_F(Backend, WithoutArgumentsItListsItsDevice) {
  ChildProcess backend({ZR7700_BACKEND}, folder_);
  EXPECT_EQ(backend.Wait(), kOk);
  EXPECT_THAT(backend.Output(), testing::MatchesRegex("direct zr7700virtual \"[^\"]+\" \"[^\"]+\" "
                                                      "\"MFG:Tessary;MDL:ZR7700;[^\"]*\" \"\"\n"));
}

TEST_F(Backend, OtherNumbersOfArgumentsGetTheUsage) {
  ChildProcess backend({ZR7700_BACKEND, "1", "anna"}, folder_, Uri());
  EXPECT_EQ(backend.Wait(), kStopQueue);
  EXPECT_THAT(backend.Errors(), HasSubstr("Usage: "));
}

TEST_F(Backend, ABadUriOrAMissingFolderStopsTheQueue) {
  ChildProcess bad(Job(), folder_, Uri("?discs=some"));
  EXPECT_EQ(bad.Wait(), kStopQueue);
  EXPECT_EQ(bad.Errors(),
            "ERROR: The device URI is wrong. \"discs\" takes a number from 0 to 1000000, not "
            "\"some\".\n");
  ChildProcess lost(Job(), folder_, {.environment = {"DEVICE_URI=zr7700virtual:/nowhere%0Aat"}});
  EXPECT_EQ(lost.Wait(), kStopQueue);
  EXPECT_EQ(lost.Errors(),
            "ERROR: The folder /nowhere?at cannot take pictures: No such file or directory.\n");
}

TEST_F(Backend, PrintsAJobAndReports) {
  StreamBuilder stream('H');
  stream.WholePage();
  ChildProcess backend(Job(), folder_, Uri("?cartridge=U"));
  const Bytes record = backend.ReadBack(144);
  ASSERT_EQ(record.size(), 144u);
  EXPECT_EQ(record[98], 'U');
  ASSERT_TRUE(backend.Write(stream.bytes()));
  backend.CloseInput();
  EXPECT_EQ(backend.Wait(), kOk);
  EXPECT_EQ(Files(), kOneDisc);
  EXPECT_THAT(backend.Errors(), HasSubstr("STATE: -connecting-to-device\n"));
  EXPECT_THAT(backend.Errors(), HasSubstr("INFO: disc 1: 1 drops, cyan 0.000"));
  EXPECT_THAT(backend.Errors(),
              HasSubstr("DEBUG: Status: busy, cartridge U, 24 discs, no error\n"));
  EXPECT_THAT(backend.Errors(), testing::Not(HasSubstr("ERROR:")));
}

TEST_F(Backend, IgnoresTerminationAndReadsOn) {
  StreamBuilder stream('H');
  stream.WholePage();
  const Bytes& bytes = stream.bytes();
  ChildProcess backend(Job(), folder_, Uri());
  backend.ReadBack(144);
  ASSERT_TRUE(backend.Write(Bytes(bytes.begin(), bytes.begin() + 50)));
  backend.Signal(SIGTERM);
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_TRUE(backend.Runs());
  ASSERT_TRUE(backend.Write(Bytes(bytes.begin() + 50, bytes.end())));
  backend.CloseInput();
  EXPECT_EQ(backend.Wait(), kOk);
  EXPECT_EQ(Files(), kOneDisc);
}

TEST_F(Backend, ACancelledJobDoesNotWaitForDiscsButIsDrained) {
  StreamBuilder stream('G');
  stream.Header().DocumentStart().PageStart().Feed();
  ChildProcess backend(Job(), folder_, Uri("?discs=0"));
  ASSERT_TRUE(backend.Write(stream.bytes()));
  EXPECT_TRUE(backend.Runs());
  backend.ReadBack(144 * 4);
  backend.Signal(SIGTERM);
  // More than any pipe holds: all of it must be taken.
  EXPECT_TRUE(backend.Write(Bytes(1 << 20, 0x55)));
  EXPECT_TRUE(backend.Runs());
  backend.CloseInput();
  EXPECT_EQ(backend.Wait(), kOk);
  EXPECT_EQ(Files(), std::set<std::string>{"job-12-report.json"});
  EXPECT_THAT(TextOf(Path("spool/job-12-report.json")), HasSubstr("\"given_up\": true"));
}

TEST_F(Backend, PrintsAFileAsOftenAsAsked) {
  WritePage("file");
  ChildProcess backend(Job({Path("file")}, "3"), folder_, Uri());
  EXPECT_EQ(backend.Wait(), kOk);
  EXPECT_EQ(Files().size(), 3u * 2 + 1);
  ChildProcess lost(Job({Path("other")}), folder_, Uri());
  EXPECT_EQ(lost.Wait(), kFailed) << "the job's fault, not the queue's";
  EXPECT_EQ(lost.Errors(), "ERROR: The print file " + Path("other") + " cannot be read.\n");
}

TEST_F(Backend, CopiesThatCannotBeReadAgainFailTheJob) {
  ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
  ChildProcess backend(Job({Path("fifo")}, "3"), folder_, Uri());
  WritePage("fifo");
  EXPECT_EQ(backend.Wait(), kFailed);
  EXPECT_EQ(Files(), kOneDisc);
  EXPECT_THAT(backend.Errors(),
              HasSubstr("ERROR: The print data cannot be read again for the next copy: "));
}

TEST_F(Backend, ACancelEndsThePrintingOfAFile) {
  WritePage("file");
  // More than the most copies count as the most.
  ChildProcess backend(Job({Path("file")}, "10000"), folder_, Uri("?pace=0.2s&discs=100000"));
  for (int i = 0; i < 400 && Files().size() < 4; ++i) backend.ReadBack(144);
  backend.Signal(SIGTERM);
  EXPECT_EQ(backend.Wait(), kOk);
  EXPECT_THAT(backend.Errors(), HasSubstr("INFO: Cancelled.\n"));
  const std::set<std::string> files = Files();
  EXPECT_GT(files.size(), 3u) << "a second copy had begun";
  for (const std::string& name : files) EXPECT_FALSE(name.ends_with(".part")) << name;
}

TEST_F(Backend, ViolationsFailTheJob) {
  ChildProcess backend(Job(), folder_, Uri());
  ASSERT_TRUE(backend.Write({'%', 'P', 'D', 'F'}));
  backend.CloseInput();
  EXPECT_EQ(backend.Wait(), kFailed);
  EXPECT_THAT(backend.Errors(),
              HasSubstr("ERROR: Byte 0: An item must begin with 0x1B, not with 0x25.\n"));
  EXPECT_THAT(backend.Errors(),
              HasSubstr("ERROR: The print data violate their format in 1 places.\n"));
}

TEST_F(Backend, AFullDiskFailsTheJobAfterAllOfItIsRead) {
  StreamBuilder stream('G');
  for (int i = 0; i < 3; ++i) stream.WholePage();
  ChildSetup setup = Uri("?discs=100");
  setup.small_disk = true;
  ChildProcess backend(Job(), folder_, setup);
  EXPECT_TRUE(backend.Write(stream.bytes()));
  backend.CloseInput();
  EXPECT_EQ(backend.Wait(), kFailed);
  EXPECT_THAT(backend.Errors(),
              HasSubstr("job-12-disc-003.png cannot be written: File too large.\n"));
  EXPECT_EQ(Files(), std::set<std::string>{"job-12-report.json"}) << "no picture, whole or not";
}

TEST_F(Backend, RunsWithoutABackChannel) {
  StreamBuilder stream('G');
  stream.WholePage();
  ChildSetup setup = Uri();
  setup.back_channel = false;
  ChildProcess backend(Job(), folder_, setup);
  ASSERT_TRUE(backend.Write(stream.bytes()));
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  backend.CloseInput();
  EXPECT_EQ(backend.Wait(), kOk);
  EXPECT_EQ(Files(), kOneDisc);
}

}  // namespace
}  // namespace zr7700::printer
