// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/device_relay.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "base/cancel_signal.h"
#include "status/test_back_channel.h"
#include "status/test_socket.h"
#include "tests/support/later_cancel.h"
#include "tests/support/log_capture.h"
#include "tests/support/own_process.h"
#include "tests/support/stream_capture.h"

namespace zr7700 {
namespace {

using test::WithNul;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

const std::string kOk = WithNul("OK");

class DeviceRelay : public ::testing::Test {
 protected:
  // Runs the relay against what `talk` does at the other end; then the utility hangs up.
  int RelayWith(const std::function<void(const test::Socket&)>& talk) {
    test::SocketPair pair;
    std::thread utility([&] {
      talk(pair.utility);
      pair.utility.Close();
    });
    test::StdoutCapture printer;
    const int result = RelayDeviceData(pair.filter.get());
    printed_ = printer.Take();
    utility.join();
    return result;
  }

  static void Complete(const test::Socket& utility) {
    utility.Send(WithNul("ChangeCartridgeComplete"));
  }

  // Lets the printer have these bytes to say.
  void PrinterSays(size_t count) {
    std::vector<uint8_t> bytes(count);
    for (size_t i = 0; i < count; i++) bytes[i] = static_cast<uint8_t>('a' + i % 26);
    channel_.Send(bytes);
  }

  static std::string Alphabet(size_t count) {
    std::string text;
    while (text.size() < count) text += "abcdefghijklmnopqrstuvwxyz";
    return text.substr(0, count);
  }

  test::BackChannel channel_;
  test::LogCapture log_;
  std::string printed_;
};

TEST_F(DeviceRelay, CompleteChangeIsOne) {
  EXPECT_EQ(RelayWith(Complete), 1);
  EXPECT_THAT(log_.Lines(), ElementsAre("Change cartridge response"));
}

TEST_F(DeviceRelay, CompleteChangeMayHaveMoreBehindIt) {
  EXPECT_EQ(RelayWith([](const auto& utility) { utility.Send("ChangeCartridgeCompleted now"); }),
            1);
}

TEST_F(DeviceRelay, UnknownCommandEndsItWithItsTextInTheLog) {
  EXPECT_EQ(RelayWith([](const auto& utility) { utility.Send(WithNul("Fly away")); }), -1);
  EXPECT_THAT(log_.Lines(), ElementsAre("Change cartridge response", "Unknown cmd", "Fly away"));
}

TEST_F(DeviceRelay, UnknownCommandIsNoFormat) {
  EXPECT_EQ(RelayWith([](const auto& utility) { utility.Send(WithNul("%s%n%s")); }), -1);
  EXPECT_EQ(log_.Lines().back(), "%s%n%s");
}

TEST_F(DeviceRelay, CommandOf512BytesWithoutANulIsTakenAsItIs) {
  EXPECT_EQ(RelayWith([](const auto& utility) { utility.Send(std::string(512, 'z')); }), -1);
  EXPECT_EQ(log_.Lines().back(), std::string(512, 'z'));
}

TEST_F(DeviceRelay, CommandsAreCaseSensitive) {
  EXPECT_EQ(RelayWith([](const auto& utility) { utility.Send(WithNul("readDeviceData 3")); }), -1);
}

TEST_F(DeviceRelay, PeerThatClosesEndsIt) {
  EXPECT_EQ(RelayWith([](const auto&) {}), -1);
  EXPECT_THAT(log_.Lines(), ElementsAre("Change cartridge response"));
}

TEST_F(DeviceRelay, ReadsFromThePrinter) {
  PrinterSays(10);
  EXPECT_EQ(RelayWith([](const auto& utility) {
              utility.Send(WithNul("ReadDeviceData 10"));
              EXPECT_EQ(utility.ReceiveAll(13), kOk + "abcdefghij");
              Complete(utility);
            }),
            1);
  EXPECT_THAT(log_.Lines(), ElementsAre("Change cartridge response", "READ_DEVICE_DATA",
                                        "Reading data from printer", "read 10"));
  EXPECT_EQ(printed_, "");
}

TEST_F(DeviceRelay, LogsAtLevel3) {
  PrinterSays(1);
  const test::LogCapture log(2);
  RelayWith([](const auto& utility) {
    utility.Send(WithNul("ReadDeviceData 1"));
    utility.Receive();
  });
  EXPECT_THAT(log.Lines(), ElementsAre());
}

TEST_F(DeviceRelay, OnlyTheWriteCommandItselfIsOrdinaryDetail) {
  const test::LogCapture log(1);
  RelayWith([](const auto& utility) {
    utility.Send(WithNul("WriteDeviceData 1"));
    utility.Receive();
    utility.Send("x");
    utility.Receive();
    utility.Send(WithNul("no such command"));
  });
  EXPECT_THAT(log.Lines(), ElementsAre("WRITE_DEVICE_DATA"));
}

TEST_F(DeviceRelay, ReadsAsManyBytesAsAsked) {
  PrinterSays(20);
  RelayWith([](const auto& utility) {
    utility.Send(WithNul("ReadDeviceData 3"));
    EXPECT_EQ(utility.ReceiveAll(6), kOk + "abc");
  });
  EXPECT_EQ(channel_.Unread(), 17);
}

TEST_F(DeviceRelay, ReadsAWholeBuffer) {
  PrinterSays(600);
  RelayWith([](const auto& utility) {
    utility.Send(WithNul("ReadDeviceData 512"));
    EXPECT_EQ(utility.ReceiveAll(515), kOk + Alphabet(512));
  });
  EXPECT_EQ(channel_.Unread(), 88);
}

class CountOverTheBuffer : public DeviceRelay, public ::testing::WithParamInterface<const char*> {};

TEST_P(CountOverTheBuffer, NeverReadsMoreThanTheBuffer) {
  PrinterSays(600);
  RelayWith([](const auto& utility) {
    utility.Send(WithNul(std::string("ReadDeviceData ") + GetParam()));
    EXPECT_EQ(utility.ReceiveAll(3), kOk);
  });
  EXPECT_GE(channel_.Unread(), 88);
}

TEST_P(CountOverTheBuffer, NeverWritesMoreThanTheBuffer) {
  RelayWith([](const auto& utility) {
    utility.Send(WithNul(std::string("WriteDeviceData ") + GetParam()));
    EXPECT_EQ(utility.ReceiveAll(3), kOk);
    utility.Send(std::string(512, 'w'));
    EXPECT_EQ(utility.ReceiveAll(3), kOk);
  });
  EXPECT_EQ(printed_, std::string(printed_.size(), 'w'));
  EXPECT_LE(printed_.size(), 512U);
}

INSTANTIATE_TEST_SUITE_P(Hostile, CountOverTheBuffer,
                         ::testing::Values("513", "100000", "2147483647", "4294967808",
                                           "99999999999999999999999"));

class CountBelowZero : public DeviceRelay, public ::testing::WithParamInterface<const char*> {};

TEST_P(CountBelowZero, WritesNothing) {
  RelayWith([](const auto& utility) {
    utility.Send(WithNul(std::string("WriteDeviceData ") + GetParam()));
    EXPECT_EQ(utility.ReceiveAll(3), kOk);
    utility.Send("data");
    EXPECT_EQ(utility.ReceiveAll(3), kOk);
  });
  EXPECT_EQ(printed_, "");
}

TEST_P(CountBelowZero, ReadsNothing) {
  PrinterSays(5);
  RelayWith([](const auto& utility) {
    utility.Send(WithNul(std::string("ReadDeviceData ") + GetParam()));
    EXPECT_EQ(utility.ReceiveAll(3), kOk);
  });
  EXPECT_EQ(channel_.Unread(), 5);
}

INSTANTIATE_TEST_SUITE_P(Hostile, CountBelowZero,
                         ::testing::Values("0", "-1", "-513", "-2147483648", "none", ""));

TEST_F(DeviceRelay, ASilentPrinterSendsNothingAfterFiveSeconds) {
  const auto start = std::chrono::steady_clock::now();
  RelayWith([](const auto& utility) {
    utility.Send(WithNul("ReadDeviceData 4"));
    EXPECT_EQ(utility.ReceiveAll(3), kOk);
    Complete(utility);
  });
  const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - start;
  EXPECT_GT(waited.count(), 4.9);
  EXPECT_LT(waited.count(), 6.0);
  EXPECT_THAT(log_.Lines(), Contains("read 4"));
}

TEST_F(DeviceRelay, FewerBytesThanAskedAreNotSent) {
  PrinterSays(3);
  RelayWith([](const auto& utility) {
    utility.Send(WithNul("ReadDeviceData 4"));
    EXPECT_EQ(utility.ReceiveAll(3), kOk);
    utility.Send(WithNul("WriteDeviceData 0"));
    EXPECT_EQ(utility.ReceiveAll(3), kOk);  // not the three bytes
  });
  EXPECT_EQ(channel_.Unread(), 0);
}

TEST_F(DeviceRelay, WritesToThePrinter) {
  EXPECT_EQ(RelayWith([](const auto& utility) {
              utility.Send(WithNul("WriteDeviceData 5"));
              EXPECT_EQ(utility.ReceiveAll(3), kOk);
              utility.Send(std::string("a\0b\nc", 5));
              EXPECT_EQ(utility.ReceiveAll(3), kOk);
              Complete(utility);
            }),
            1);
  EXPECT_EQ(printed_, std::string("a\0b\nc", 5));
  EXPECT_THAT(log_.Lines(), ElementsAre("Change cartridge response", "WRITE_DEVICE_DATA",
                                        "Writing data to printer"));
}

TEST_F(DeviceRelay, FlushesWhatItWrites) {
  test::SocketPair pair;
  test::StdoutCapture printer;
  std::string at_ok;
  std::thread utility([&] {
    pair.utility.Send(WithNul("WriteDeviceData 5"));
    pair.utility.Receive();
    pair.utility.Send("bytes");
    pair.utility.Receive();
    at_ok = printer.Arrived();
    pair.utility.Close();
  });
  RelayDeviceData(pair.filter.get());
  utility.join();
  printer.Take();
  EXPECT_EQ(at_ok, "bytes");
}

TEST_F(DeviceRelay, WritesAsManyBytesAsTheCommandSays) {
  RelayWith([](const auto& utility) {
    utility.Send(WithNul("WriteDeviceData 2"));
    utility.Receive();
    utility.Send("abcdef");
    utility.Receive();
  });
  EXPECT_EQ(printed_, "ab");
}

TEST_F(DeviceRelay, ServesOneCommandAfterAnother) {
  PrinterSays(4);
  EXPECT_EQ(RelayWith([](const auto& utility) {
              utility.Send(WithNul("ReadDeviceData 2"));
              EXPECT_EQ(utility.ReceiveAll(5), kOk + "ab");
              utility.Send(WithNul("WriteDeviceData 2"));
              EXPECT_EQ(utility.ReceiveAll(3), kOk);
              utility.Send("xy");
              EXPECT_EQ(utility.ReceiveAll(3), kOk);
              utility.Send(WithNul("ReadDeviceData 2"));
              EXPECT_EQ(utility.ReceiveAll(5), kOk + "cd");
              Complete(utility);
            }),
            1);
  EXPECT_EQ(printed_, "xy");
}

TEST_F(DeviceRelay, PeerThatVanishesInTheMiddleEndsItWithoutASignal) {
  PrinterSays(10);
  EXPECT_EQ(RelayWith([](const auto& utility) { utility.Send(WithNul("ReadDeviceData 10")); }), -1);
  EXPECT_EQ(RelayWith([](const auto& utility) { utility.Send(WithNul("WriteDeviceData 10")); }),
            -1);
  EXPECT_EQ(printed_, "");
}

TEST_F(DeviceRelay, ACancelEndsTheWaitForACommand) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    const test::SocketPair pair;
    test::CancelIn(100);
    EXPECT_EQ(RelayDeviceData(pair.filter.get()), -1);
  });
}

TEST_F(DeviceRelay, ACancelEndsTheWaitForData) {
  test::InOwnProcess([] {
    InstallCancelHandler();
    const test::LogCapture log;
    const test::SocketPair pair;
    pair.utility.Send(WithNul("WriteDeviceData 5"));
    test::CancelIn(100);
    EXPECT_EQ(RelayDeviceData(pair.filter.get()), -1);
    EXPECT_THAT(log.Lines(), Not(Contains("Writing data to printer")));
  });
}

}  // namespace
}  // namespace zr7700
