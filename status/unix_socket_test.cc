// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/unix_socket.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>

#include "base/cancel_signal.h"
#include "status/test_socket.h"
#include "tests/support/later_cancel.h"
#include "tests/support/own_process.h"

namespace zr7700 {
namespace {

const sockaddr_un& In(const UnixAddress& address) {
  return *reinterpret_cast<const sockaddr_un*>(address.get());
}

TEST(UnixAddress, CarriesFamilyAndPath) {
  const UnixAddress address("/var/tmp/some.socket");
  EXPECT_EQ(In(address).sun_family, AF_UNIX);
  EXPECT_STREQ(In(address).sun_path, "/var/tmp/some.socket");
}

TEST(UnixAddress, IsHundredAndSixBytes) { EXPECT_EQ(UnixAddress::kBytes, 106U); }

TEST(UnixAddress, TakesUpTo103Characters) {
  const std::string fits(103, 'p');
  EXPECT_STREQ(In(UnixAddress(fits.c_str())).sun_path, fits.c_str());
}

TEST(UnixAddress, CutsALongerPath) {
  const std::string path(300, 'p');
  EXPECT_STREQ(In(UnixAddress(path.c_str())).sun_path, std::string(103, 'p').c_str());
}

TEST(OpenUnixSocket, IsAStreamThatOtherProgramsDoNotInherit) {
  const test::Socket opened(OpenUnixSocket());
  ASSERT_GE(opened.get(), 0);
  int type = 0;
  socklen_t bytes = sizeof type;
  getsockopt(opened.get(), SOL_SOCKET, SO_TYPE, &type, &bytes);
  EXPECT_EQ(type, SOCK_STREAM);
  EXPECT_EQ(fcntl(opened.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(SendText, SendsTheNulToo) {
  const test::SocketPair pair;
  EXPECT_EQ(SendText(pair.filter.get(), "OK"), 3);
  EXPECT_EQ(pair.utility.Receive(), test::WithNul("OK"));
}

TEST(SendText, ToAVanishedPeerFailsWithoutASignal) {
  test::SocketPair pair;
  pair.utility.Close();
  EXPECT_EQ(SendText(pair.filter.get(), "OK"), -1);
}

TEST(SendBytes, SendsThemAsTheyAre) {
  const test::SocketPair pair;
  const std::string bytes("a\0b\n", 4);
  EXPECT_EQ(SendBytes(pair.filter.get(), bytes), 4);
  EXPECT_EQ(pair.utility.Receive(), bytes);
}

TEST(SendBytes, ToAVanishedPeerFailsWithoutASignal) {
  test::SocketPair pair;
  pair.utility.Close();
  EXPECT_EQ(SendBytes(pair.filter.get(), std::string(100, 'x')), -1);
}

TEST(ReceiveBytes, TakesUpToTheBuffer) {
  const test::SocketPair pair;
  pair.utility.Send("abcdef");
  std::array<char, 4> buffer = {};
  EXPECT_EQ(ReceiveBytes(pair.filter.get(), buffer), 4);
  EXPECT_EQ(std::string(buffer.data(), 4), "abcd");
  EXPECT_EQ(ReceiveBytes(pair.filter.get(), buffer), 2);
}

TEST(ReceiveBytes, WaitsForThePeer) {
  const test::SocketPair pair;
  std::thread utility([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    pair.utility.Send("x");
  });
  std::array<char, 4> buffer = {};
  EXPECT_EQ(ReceiveBytes(pair.filter.get(), buffer), 1);
  utility.join();
}

TEST(ReceiveBytes, TellsThatThePeerHasClosed) {
  test::SocketPair pair;
  pair.utility.Close();
  std::array<char, 4> buffer = {};
  EXPECT_EQ(ReceiveBytes(pair.filter.get(), buffer), 0);
}

TEST(ReceiveBytes, FailsOnWhatIsNoSocket) {
  const test::Socket file(open("/dev/null", O_RDONLY));
  std::array<char, 4> buffer = {};
  EXPECT_EQ(ReceiveBytes(file.get(), buffer), -1);
}

TEST(ReceiveBytes, EndsWithTheJobsCancel) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    const test::SocketPair pair;
    test::CancelIn(50);
    std::array<char, 4> buffer = {};
    EXPECT_EQ(ReceiveBytes(pair.filter.get(), buffer), -1);
  });
}

TEST(SendBytes, ACancelEndsTheWaitForAPeerThatTakesNothing) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    const test::SocketPair pair;
    const std::string bytes(1000, 'x');
    while (send(pair.filter.get(), bytes.data(), bytes.size(), MSG_DONTWAIT) > 0) {
    }
    test::CancelIn(50);
    EXPECT_EQ(SendBytes(pair.filter.get(), bytes), -1);
    EXPECT_TRUE(CancelRequested());
  });
}

}  // namespace
}  // namespace zr7700
