// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/utility_connection.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include "base/cancel_signal.h"
#include "status/test_socket.h"
#include "tests/support/later_cancel.h"
#include "tests/support/log_capture.h"
#include "tests/support/own_process.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

class ConnectToUtilityTest : public ::testing::Test {
 protected:
  // Connects to a utility that answers with `answer`, or closes without one.
  bool ConnectsWith(const std::optional<std::string>& answer) {
    const test::Listener utility(path_);
    std::thread talk([&] {
      test::Socket filter = utility.Accept();
      if (!answer) return;
      filter.Send(*answer);
      filter.Receive();  // until the filter closes
    });
    const bool connected = ConnectToUtility(path_.c_str());
    DisconnectFromUtility();
    talk.join();
    std::filesystem::remove(path_);
    return connected;
  }

  test::TemporaryFolder folder_;
  const std::string path_ = folder_.PathOf("utility.socket");
};

TEST_F(ConnectToUtilityTest, TakesAnAnswerThatBeginsWithAck) {
  test::InOwnProcess([this] {
    EXPECT_TRUE(ConnectsWith("Ack"));
    EXPECT_TRUE(ConnectsWith(test::WithNul("Ack")));
    EXPECT_TRUE(ConnectsWith("Acknowledged"));
    EXPECT_TRUE(ConnectsWith("Ack" + std::string(500, '!')));
  });
}

TEST_F(ConnectToUtilityTest, RefusesLowerCase) {
  test::InOwnProcess([this] { EXPECT_FALSE(ConnectsWith("ack")); });
}

TEST_F(ConnectToUtilityTest, RefusesAnotherWord) {
  test::InOwnProcess([this] { EXPECT_FALSE(ConnectsWith("Nak")); });
}

TEST_F(ConnectToUtilityTest, RefusesAnAnswerThatIsTooShort) {
  test::InOwnProcess([this] { EXPECT_FALSE(ConnectsWith("Ac")); });
}

TEST_F(ConnectToUtilityTest, RefusesAUtilityThatHangsUp) {
  test::InOwnProcess([this] { EXPECT_FALSE(ConnectsWith(std::nullopt)); });
}

TEST_F(ConnectToUtilityTest, FailsWhenNobodyListens) {
  test::InOwnProcess([this] { EXPECT_FALSE(ConnectToUtility(path_.c_str())); });
}

TEST_F(ConnectToUtilityTest, FailsOnAnOrdinaryFile) {
  test::InOwnProcess([this] {
    folder_.WriteFile("utility.socket", "Ack");
    EXPECT_FALSE(ConnectToUtility(path_.c_str()));
  });
}

TEST_F(ConnectToUtilityTest, NeverTriesAgainAfterAFailure) {
  test::InOwnProcess([this] {
    EXPECT_FALSE(ConnectToUtility(path_.c_str()));
    const test::Listener utility(path_);
    EXPECT_FALSE(ConnectToUtility(path_.c_str()));
    EXPECT_FALSE(utility.HasCaller());
  });
}

TEST_F(ConnectToUtilityTest, NeverTriesAgainAfterAWrongAnswer) {
  test::InOwnProcess([this] {
    EXPECT_FALSE(ConnectsWith("Nak"));
    const test::Listener utility(path_);
    EXPECT_FALSE(ConnectToUtility(path_.c_str()));
    EXPECT_FALSE(utility.HasCaller());
  });
}

TEST_F(ConnectToUtilityTest, StaysOpenUntilDisconnected) {
  test::InOwnProcess([this] {
    const test::Listener utility(path_);
    std::optional<test::Socket> filter;
    std::thread talk([&] {
      filter.emplace(utility.Accept());
      filter->Send("Ack");
    });
    EXPECT_TRUE(ConnectToUtility(path_.c_str()));
    talk.join();
    char byte;
    EXPECT_EQ(recv(filter->get(), &byte, 1, MSG_DONTWAIT), -1);
    DisconnectFromUtility();
    EXPECT_EQ(recv(filter->get(), &byte, 1, MSG_DONTWAIT), 0);
    DisconnectFromUtility();
  });
}

TEST_F(ConnectToUtilityTest, AFailureLeavesNothingOpen) {
  test::InOwnProcess([this] {
    const int before = open("/dev/null", O_RDONLY);
    EXPECT_FALSE(ConnectsWith("Nak"));
    const int after = open("/dev/null", O_RDONLY);
    EXPECT_EQ(after, before + 1);
  });
}

TEST_F(ConnectToUtilityTest, GivesASilentUtilityTenSeconds) {
  test::InOwnProcess([this] {
    const test::Listener utility(path_);
    const Clock::time_point start = Clock::now();
    EXPECT_FALSE(ConnectToUtility(path_.c_str()));
    EXPECT_GT(SecondsSince(start), 9.8);
    EXPECT_LT(SecondsSince(start), 11.0);
  });
}

TEST_F(ConnectToUtilityTest, WaitsNoLongerForAPlaceInAFullBacklog) {
  test::InOwnProcess([this] {
    const test::Listener utility(path_, 0);
    const test::Socket occupant = test::ConnectTo(path_);
    const Clock::time_point start = Clock::now();
    EXPECT_FALSE(ConnectToUtility(path_.c_str()));
    EXPECT_LT(SecondsSince(start), 11.0);
  });
}

TEST_F(ConnectToUtilityTest, TakesAPlaceInTheBacklogThatBecomesFree) {
  test::InOwnProcess([this] {
    const test::Listener utility(path_, 0);
    const test::Socket occupant = test::ConnectTo(path_);
    std::thread talk([&] {
      std::this_thread::sleep_for(milliseconds(300));
      const test::Socket first = utility.Accept();
      utility.Accept().Send("Ack");
    });
    EXPECT_TRUE(ConnectToUtility(path_.c_str()));
    talk.join();
  });
}

// The seconds that a call takes that is cancelled soon after its begin.
double SecondsWhenCancelled(const std::string& path) {
  InstallCancelHandler();
  test::CancelIn(100);
  const Clock::time_point start = Clock::now();
  EXPECT_FALSE(ConnectToUtility(path.c_str()));
  EXPECT_TRUE(CancelRequested());
  return SecondsSince(start);
}

TEST_F(ConnectToUtilityTest, ACancelEndsTheWaitForTheAnswer) {
  test::InOwnProcess([this] {
    const test::Listener utility(path_);
    EXPECT_LT(SecondsWhenCancelled(path_), 5.0);
  });
}

TEST_F(ConnectToUtilityTest, ACancelEndsTheWaitForAPlaceInTheBacklog) {
  test::InOwnProcess([this] {
    const test::Listener utility(path_, 0);
    const test::Socket occupant = test::ConnectTo(path_);
    EXPECT_LT(SecondsWhenCancelled(path_), 5.0);
  });
}

TEST_F(ConnectToUtilityTest, ACancelledJobDoesNotCall) {
  test::InOwnProcess([this] {
    const test::Listener utility(path_);
    InstallCancelHandler();
    raise(SIGTERM);
    EXPECT_FALSE(ConnectToUtility(path_.c_str()));
    EXPECT_FALSE(utility.HasCaller());
  });
}

TEST_F(ConnectToUtilityTest, CutsAPathOver103Characters) {
  test::InOwnProcess([this] {
    const std::string start = folder_.PathOf("");
    const std::string name(103 - start.size(), 's');
    const test::Listener utility(start + name);
    std::thread talk([&] { utility.Accept().Send("Ack"); });
    EXPECT_TRUE(ConnectToUtility((start + name + "surplus").c_str()));
    talk.join();
  });
}

class AcceptReplyTest : public ::testing::Test {
 protected:
  test::TemporaryFolder folder_;
  const std::string path_ = folder_.PathOf("reply.socket");
};

TEST_F(AcceptReplyTest, HandsOutABlockingConnection) {
  std::optional<test::Socket> utility;
  std::thread call([&] { utility.emplace(test::ConnectTo(path_)); });
  const test::Socket connection(AcceptReply(path_.c_str()));
  call.join();
  ASSERT_GE(connection.get(), 0);
  EXPECT_EQ(fcntl(connection.get(), F_GETFL) & O_NONBLOCK, 0);
  utility->Send("hello");
  EXPECT_EQ(connection.Receive(), "hello");
}

TEST_F(AcceptReplyTest, LetsEverybodyConnect) {
  struct stat info = {};
  std::thread call([&] {
    const test::Socket utility = test::ConnectTo(path_);
    EXPECT_EQ(stat(path_.c_str(), &info), 0);
  });
  const test::Socket connection(AcceptReply(path_.c_str()));
  call.join();
  EXPECT_TRUE(S_ISSOCK(info.st_mode));
  EXPECT_EQ(info.st_mode & 07777, 0777U);
}

TEST_F(AcceptReplyTest, TakesThePlaceOfAStaleSocket) {
  { const test::Listener stale(path_); }
  std::thread call([&] { const test::Socket utility = test::ConnectTo(path_); });
  EXPECT_GE(test::Socket(AcceptReply(path_.c_str())).get(), 0);
  call.join();
}

TEST_F(AcceptReplyTest, TakesThePlaceOfAnOrdinaryFile) {
  folder_.WriteFile("reply.socket", "rubbish");
  std::thread call([&] { const test::Socket utility = test::ConnectTo(path_); });
  EXPECT_GE(test::Socket(AcceptReply(path_.c_str())).get(), 0);
  call.join();
}

TEST_F(AcceptReplyTest, ListensNoMoreAfterwards) {
  std::optional<test::Socket> first;
  std::thread call([&] { first.emplace(test::ConnectTo(path_)); });
  const test::Socket connection(AcceptReply(path_.c_str()));
  call.join();
  test::Socket late(socket(AF_UNIX, SOCK_STREAM, 0));
  sockaddr_storage bound = {};
  socklen_t bytes = sizeof bound;
  ASSERT_EQ(getpeername(first->get(), reinterpret_cast<sockaddr*>(&bound), &bytes), 0);
  EXPECT_EQ(connect(late.get(), reinterpret_cast<sockaddr*>(&bound), bytes), -1);
  EXPECT_EQ(errno, ECONNREFUSED);
}

TEST_F(AcceptReplyTest, LogsAFailedBind) {
  const test::LogCapture log(1);
  EXPECT_EQ(AcceptReply(folder_.PathOf("missing/reply.socket").c_str()), -1);
  EXPECT_THAT(log.Lines(), ElementsAre("Bind failed 2"));  // no such file or directory
}

TEST_F(AcceptReplyTest, WorksAgainAfterAFailedBind) {
  EXPECT_EQ(AcceptReply(folder_.PathOf("missing/reply.socket").c_str()), -1);
  std::thread call([&] { const test::Socket utility = test::ConnectTo(path_); });
  EXPECT_GE(test::Socket(AcceptReply(path_.c_str())).get(), 0);
  call.join();
}

TEST_F(AcceptReplyTest, WaitsWithoutBurningAProcessor) {
  std::optional<test::Socket> utility;
  std::thread call([&] {
    std::this_thread::sleep_for(milliseconds(600));
    utility.emplace(test::ConnectTo(path_));
  });
  const clock_t before = clock();
  EXPECT_GE(test::Socket(AcceptReply(path_.c_str())).get(), 0);
  EXPECT_LT(static_cast<double>(clock() - before) / CLOCKS_PER_SEC, 0.2);
  call.join();
}

TEST_F(AcceptReplyTest, StopAcceptingEndsItAndEveryLaterOne) {
  test::InOwnProcess([this] {
    std::thread stop([] {
      std::this_thread::sleep_for(milliseconds(100));
      StopAccepting();
    });
    EXPECT_EQ(AcceptReply(path_.c_str()), -1);
    stop.join();
    EXPECT_EQ(AcceptReply(path_.c_str()), -1);
  });
}

TEST_F(AcceptReplyTest, ACancelEndsIt) {
  test::InOwnProcess([this] {
    InstallCancelHandler();
    test::CancelIn(100);
    EXPECT_EQ(AcceptReply(path_.c_str()), -1);
  });
}

TEST_F(AcceptReplyTest, AnotherErrorOfAcceptEndsIt) {
  test::InOwnProcess([this] {
    // The listening socket takes the last number that the process may use.
    const int last = dup(0);
    close(last);
    rlimit usual = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const rlimit narrow = {static_cast<rlim_t>(last) + 1, usual.rlim_max};
    std::thread rescue([] {
      std::this_thread::sleep_for(milliseconds(2000));
      StopAccepting();
    });
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &narrow), 0);
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(AcceptReply(path_.c_str()), -1);
    EXPECT_LT(SecondsSince(start), 1.5);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
    EXPECT_TRUE(std::filesystem::exists(path_));  // it did listen
    rescue.join();
  });
}

}  // namespace
}  // namespace zr7700
