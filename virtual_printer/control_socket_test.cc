// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/control_socket.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <fstream>

namespace zr7700::printer {
namespace {

class ControlSocketTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(mkdtemp(folder_), nullptr);
    path_ = std::string(folder_) + "/control";
  }
  void TearDown() override {
    unlink(path_.c_str());
    rmdir(folder_);
  }

  Descriptor Call() const {
    Descriptor caller(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, path_.c_str());
    EXPECT_EQ(connect(caller.number(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    const timeval patience{.tv_sec = 5, .tv_usec = 0};
    setsockopt(caller.number(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    return caller;
  }

  static void Say(const Descriptor& caller, std::string_view text) {
    EXPECT_EQ(send(caller.number(), text.data(), text.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(text.size()));
  }

  // What has been answered so far; empty once the printer has hung up.
  static std::string Listen(const Descriptor& caller) {
    char block[2000];
    const ssize_t count = recv(caller.number(), block, sizeof block, 0);
    return std::string(block, count > 0 ? static_cast<size_t>(count) : 0);
  }

  static std::string Echo(std::string_view line) { return "heard " + std::string(line); }

  char folder_[32] = "/tmp/zr7700-control-XXXXXX";
  std::string path_;
};

TEST_F(ControlSocketTest, EveryLineIsAnswered) {
  ControlSocket control;
  std::string error;
  ASSERT_TRUE(control.Open(path_, error)) << error;
  const Descriptor first = Call();
  const Descriptor second = Call();
  Say(first, "one\ntwo\nthr");
  Say(second, "other\n");
  control.Serve(Echo);
  EXPECT_EQ(Listen(first), "heard one\nheard two\n");
  EXPECT_EQ(Listen(second), "heard other\n");
  Say(first, "ee\n");
  control.Serve(Echo);
  EXPECT_EQ(Listen(first), "heard three\n");
}

TEST_F(ControlSocketTest, TakesThePlaceOfASocketThatNobodyListensOn) {
  {
    const Descriptor killed(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, path_.c_str());
    ASSERT_EQ(bind(killed.number(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  }
  ControlSocket control;
  std::string error;
  EXPECT_TRUE(control.Open(path_, error)) << error;
}

TEST_F(ControlSocketTest, LeavesAListenersSocketAlone) {
  ControlSocket first;
  std::string error;
  ASSERT_TRUE(first.Open(path_, error)) << error;
  {
    ControlSocket second;
    EXPECT_FALSE(second.Open(path_, error));
    EXPECT_EQ(error, "The control socket " + path_ + " cannot be made: Address already in use.");
  }
  const Descriptor caller = Call();
  Say(caller, "still here\n");
  first.Serve(Echo);
  EXPECT_EQ(Listen(caller), "heard still here\n");
}

TEST_F(ControlSocketTest, LeavesAFileThatTookItsPlace) {
  std::string error;
  {
    ControlSocket control;
    ASSERT_TRUE(control.Open(path_, error)) << error;
    ASSERT_EQ(unlink(path_.c_str()), 0);
    // The first one keeps the old file's number from being used again.
    ControlSocket other;
    ASSERT_TRUE(other.Open(path_ + "2", error)) << error;
    ASSERT_EQ(rename((path_ + "2").c_str(), path_.c_str()), 0);
  }
  EXPECT_EQ(access(path_.c_str(), F_OK), 0);
}

TEST_F(ControlSocketTest, ACallerWhoClosesItsSideIsAnsweredAndLetGo) {
  ControlSocket control;
  std::string error;
  ASSERT_TRUE(control.Open(path_, error)) << error;
  const Descriptor caller = Call();
  Say(caller, "last\n");
  shutdown(caller.number(), SHUT_WR);
  control.Serve(Echo);
  control.Serve(Echo);
  EXPECT_EQ(Listen(caller), "heard last\n");
  EXPECT_EQ(Listen(caller), "");
  std::vector<pollfd> waits;
  control.AddWaits(waits);
  EXPECT_EQ(waits.size(), 1u) << "only the listener";
}

TEST_F(ControlSocketTest, AnEndlessLineIsHungUpOn) {
  ControlSocket control;
  std::string error;
  ASSERT_TRUE(control.Open(path_, error)) << error;
  const Descriptor caller = Call();
  Say(caller, std::string(1500, 'x'));
  control.Serve(Echo);
  control.Serve(Echo);
  EXPECT_EQ(Listen(caller), "");
}

TEST_F(ControlSocketTest, ANinthCallerIsHungUpOn) {
  ControlSocket control;
  std::string error;
  ASSERT_TRUE(control.Open(path_, error)) << error;
  std::vector<Descriptor> callers;
  for (int i = 0; i < 8; ++i) callers.push_back(Call());
  control.Serve(Echo);
  const Descriptor ninth = Call();
  control.Serve(Echo);
  EXPECT_EQ(Listen(ninth), "");
  Say(callers[7], "here\n");
  control.Serve(Echo);
  EXPECT_EQ(Listen(callers[7]), "heard here\n");
}

TEST_F(ControlSocketTest, ASocketLeftOverGivesWayAndAFileDoesNot) {
  std::string error;
  const Descriptor old(socket(AF_UNIX, SOCK_STREAM, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, path_.c_str());
  ASSERT_EQ(bind(old.number(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  {
    ControlSocket control;
    EXPECT_TRUE(control.Open(path_, error)) << error;
  }
  struct stat facts {};
  EXPECT_NE(lstat(path_.c_str(), &facts), 0) << "the socket goes with its owner";
  std::ofstream(path_) << "precious";
  ControlSocket control;
  EXPECT_FALSE(control.Open(path_, error));
  EXPECT_EQ(error, "The control socket " + path_ + " cannot be made: Address already in use.");
}

TEST_F(ControlSocketTest, APathThatIsTooLongIsSaid) {
  ControlSocket control;
  std::string error;
  const std::string path = "/tmp/" + std::string(103, 'x');
  EXPECT_FALSE(control.Open(path, error));
  EXPECT_EQ(error, "The control socket " + path + " cannot be made: File name too long.");
}

}  // namespace
}  // namespace zr7700::printer
