// Built with "." in front of the fixed paths: the sockets lie in the test's own folder.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/utility_notices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "status/test_back_channel.h"
#include "status/test_socket.h"
#include "status/utility_connection.h"
#include "tests/support/log_capture.h"
#include "tests/support/own_process.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

constexpr char kUtility[] = "var/tmp/tessary/com.tessary.zr7700.socket";
constexpr char kReply[] = "var/tmp/tessary/com.tessary.zr77002.socket";

struct NoticeCase {
  const char* name;
  int (*notify)();
  const char* text;
  int result_of_continue;
  int result_of_change;
};

void PrintTo(const NoticeCase& notice, std::ostream* out) { *out << notice.name; }

int NotifyPrinterErrorAndWait() { return NotifyPrinterError(true); }

// A change is followed by the utility's "ChangeCartridgeComplete".
constexpr NoticeCase kCases[] = {
    {"InkLow", NotifyInkLow, "InkLow___________", 0, 1},
    {"InkMissingOrEmpty", NotifyInkMissingOrEmpty, "InkMissingOrEmpty", -1, 1},
    {"PaperNotLoaded", NotifyPaperNotLoaded, "PaperNotLoaded___", 0, -1},
    {"PrinterError", NotifyPrinterErrorAndWait, "PrinterError_____", 0, -1},
    {"AlignmentNeeded", NotifyAlignmentNeeded, "AlignmentNeeded__", 0, -1},
};

class Notices : public ::testing::Test {
 protected:
  Notices() {
    std::filesystem::create_directories(folder_.path() / "var/tmp/tessary");
    EXPECT_EQ(chdir(folder_.path().c_str()), 0);
  }
  ~Notices() override { EXPECT_EQ(chdir("/"), 0); }

  test::BackChannel channel_;
  test::TemporaryFolder folder_;
};

class EveryNotice : public Notices, public ::testing::WithParamInterface<NoticeCase> {
 protected:
  // Sends the notice to a utility that acknowledges, connects back and sends `replies` in turn,
  // having seen the notice; then waits for the end.
  int ResultWith(const std::vector<std::string>& replies) {
    const test::Listener utility(kUtility);
    std::string after_ack = "?";
    std::string notice;
    std::thread talk([&] {
      const test::Socket filter = utility.Accept();
      filter.Send("Ack");
      after_ack = filter.Receive();
      const test::Socket back = test::ConnectTo(kReply);
      notice = back.Receive();
      for (const std::string& reply : replies) {
        back.Send(reply);
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
      }
      // Without replies the utility hangs up.
      if (!replies.empty()) {
        EXPECT_EQ(back.Receive(), "");
      }
    });
    const int result = GetParam().notify();
    talk.join();
    EXPECT_EQ(after_ack, "");  // the filter has closed the connection that was acknowledged
    EXPECT_EQ(notice, test::WithNul(GetParam().text));
    EXPECT_EQ(notice.size(), 18U);
    std::filesystem::remove(kUtility);
    return result;
  }
};

TEST_P(EveryNotice, ContinuePrintJob) {
  test::InOwnProcess([this] {
    EXPECT_EQ(ResultWith({test::WithNul("ContinuePrintJob")}), GetParam().result_of_continue);
  });
}

TEST_P(EveryNotice, ChangeCartridge) {
  test::InOwnProcess([this] {
    EXPECT_EQ(
        ResultWith({test::WithNul("ChangeCartridge"), test::WithNul("ChangeCartridgeComplete")}),
        GetParam().result_of_change);
  });
}

TEST_P(EveryNotice, AnotherReplyIsNone) {
  test::InOwnProcess([this] { EXPECT_EQ(ResultWith({test::WithNul("Whatever")}), -1); });
}

TEST_P(EveryNotice, RepliesAreComparedWhole) {
  test::InOwnProcess([this] {
    EXPECT_EQ(ResultWith({test::WithNul("ContinuePrintJobs")}), -1);
    EXPECT_EQ(ResultWith({test::WithNul("ContinuePrint")}), -1);
    EXPECT_EQ(ResultWith({test::WithNul("ChangeCartridges")}), -1);
    EXPECT_EQ(ResultWith({test::WithNul("continueprintjob")}), -1);
  });
}

TEST_P(EveryNotice, AReplyOfRubbishAsLongAsTheBufferIsNone) {
  test::InOwnProcess([this] { EXPECT_EQ(ResultWith({std::string(512, 'C')}), -1); });
}

TEST_P(EveryNotice, AUtilityThatHangsUpGivesNoReply) {
  test::InOwnProcess([this] { EXPECT_EQ(ResultWith({}), -1); });
}

TEST_P(EveryNotice, WithoutAUtilityIsNotReachable) {
  test::InOwnProcess([] { EXPECT_EQ(GetParam().notify(), -2); });
}

TEST_P(EveryNotice, IsNotReachableForGoodAfterOneFailure) {
  test::InOwnProcess([] {
    EXPECT_EQ(NotifyPrinterError(false), -2);
    const test::Listener utility(kUtility);
    EXPECT_EQ(GetParam().notify(), -2);
    EXPECT_FALSE(utility.HasCaller());
  });
}

TEST_P(EveryNotice, GivesNoReplyWhenAcceptingIsStopped) {
  test::InOwnProcess([] {
    const test::Listener utility(kUtility);
    std::thread talk([&] { utility.Accept().Send("Ack"); });
    StopAccepting();
    EXPECT_EQ(GetParam().notify(), -1);
    talk.join();
  });
}

TEST_P(EveryNotice, GivesNoReplyWhenTheReplySocketCannotBeMade) {
  test::InOwnProcess([] {
    const test::LogCapture log;
    // A folder that is not empty cannot be unlinked, and no socket takes its name.
    std::filesystem::create_directories(std::string(kReply) + "/inside");
    const test::Listener utility(kUtility);
    std::thread talk([&] { utility.Accept().Send("Ack"); });
    EXPECT_EQ(GetParam().notify(), -1);
    talk.join();
    EXPECT_EQ(log.Lines().back(), "Bind failed 98");  // address in use
  });
}

INSTANTIATE_TEST_SUITE_P(All, EveryNotice, ::testing::ValuesIn(kCases),
                         [](const auto& tested) { return tested.param.name; });

TEST_F(Notices, PrinterErrorWithoutWaitingIsOverWithTheAck) {
  test::InOwnProcess([] {
    const test::Listener utility(kUtility);
    std::string after_ack = "?";
    std::thread talk([&] {
      const test::Socket filter = utility.Accept();
      filter.Send("Ack");
      after_ack = filter.Receive();
    });
    EXPECT_EQ(NotifyPrinterError(false), -1);
    talk.join();
    EXPECT_EQ(after_ack, "");
    EXPECT_FALSE(std::filesystem::exists(kReply));
  });
}

TEST_F(Notices, LowInkIsNotMentionedAgainOnceThePersonContinued) {
  test::InOwnProcess([] {
    const test::Listener utility(kUtility);
    std::thread talk([&] {
      utility.Accept().Send("Ack");
      const test::Socket back = test::ConnectTo(kReply);
      back.Receive();
      back.Send(test::WithNul("ContinuePrintJob"));
      back.Receive();
    });
    EXPECT_EQ(NotifyInkLow(), 0);
    talk.join();
    EXPECT_EQ(NotifyInkLow(), 0);
    EXPECT_FALSE(utility.HasCaller());
  });
}

TEST_F(Notices, ContinuingAnotherNoticeDoesNotSilenceLowInk) {
  test::InOwnProcess([] {
    const test::Listener utility(kUtility);
    std::thread talk([&] {
      utility.Accept().Send("Ack");
      const test::Socket back = test::ConnectTo(kReply);
      back.Receive();
      back.Send(test::WithNul("ContinuePrintJob"));
      back.Receive();
      utility.Accept().Send("Nak");
    });
    EXPECT_EQ(NotifyPaperNotLoaded(), 0);
    EXPECT_EQ(NotifyInkLow(), -2);
    talk.join();
  });
}

std::atomic<bool> is_held = false;
std::atomic<bool> is_let_go = false;

void HoldOn(int) {
  is_held = true;
  while (!is_let_go.load()) usleep(1000);
}

// Connects to the reply socket, says "ContinuePrintJob" and is gone again, all while the thread
// that waits for the connection is held up by a signal.
void ReplyAndVanishBefore(pthread_t waiting) {
  while (!std::filesystem::exists(kReply)) usleep(1000);
  for (bool replied = false; !replied;) {
    is_held = is_let_go = false;
    pthread_kill(waiting, SIGUSR1);
    while (!is_held.load()) usleep(1000);
    test::Socket back(socket(AF_UNIX, SOCK_STREAM, 0));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path, kReply, sizeof kReply);
    // It may not be listening yet.
    replied = connect(back.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    if (replied) back.Send(test::WithNul("ContinuePrintJob"));
    back.Close();
    is_let_go = true;
    usleep(10'000);
  }
}

// The notice cannot be sent to it any more. The two ink notices end there; the others still read
// what it said.
TEST_P(EveryNotice, AUtilityThatVanishedBeforeTheNotice) {
  test::InOwnProcess([] {
    signal(SIGUSR1, HoldOn);
    const test::Listener utility(kUtility);
    std::thread talk([&, waiting = pthread_self()] {
      utility.Accept().Send("Ack");
      ReplyAndVanishBefore(waiting);
    });
    const bool is_of_ink =
        GetParam().notify == NotifyInkLow || GetParam().notify == NotifyInkMissingOrEmpty;
    EXPECT_EQ(GetParam().notify(), is_of_ink ? -1 : 0);
    talk.join();
  });
}

}  // namespace
}  // namespace zr7700
