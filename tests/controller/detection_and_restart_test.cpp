#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "orb-gnss/module_driver.h"
#include "support/receiver_test.h"

namespace {

using orb::test::contentOf;
using orb::test::hex;
using orb::test::kNoDevice;
using orb::test::kTimedOut;
using orb::test::StampedDriver;
using orb::test::standardErrorOf;

constexpr const char* kQuery = "A0 A1 00 02 02 01 03 0D 0A";
constexpr const char* kNoReplyLine =
    "STAMP:  Did not receive : 02 00: Query revision information of software\n";
constexpr const char* kNotSentLine =
    "STAMP:  Could not send : 02 00: Query revision information of software\n";

// Detection.

class ChipDetection : public orb::test::ReceiverTest {
 protected:
  StampedDriver driver_;
};

class ChipDetectionWithoutDevice : public orb::test::NoReceiverTest {
 protected:
  StampedDriver driver_;
};

TEST_F(ChipDetection, FindsTheReceiver) { EXPECT_EQ(driver_.gpsObtChipDetect(), 1u); }

TEST_F(ChipDetection, FindsAReceiverOnANamedDevice) {
  orb::test::ReceiverOnTty other(files_.otherTty);
  EXPECT_EQ(driver_.gpsObtChipDetect("/dev/tty_other"), 1u);
  EXPECT_EQ(other.sent(), kQuery);
  EXPECT_EQ(sent(), "");
}

TEST_F(ChipDetection, UsesANamedDeviceForThatExchangeOnly) {
  orb::test::ReceiverOnTty other(files_.otherTty);
  EXPECT_EQ(driver_.gpsObtChipDetect("/dev/tty_other"), 1u);
  EXPECT_EQ(driver_.gpsObtChipDetect(), 1u);
  EXPECT_EQ(driver_.restart(false), 0u);
  EXPECT_EQ(other.sent(), kQuery);
  EXPECT_EQ(sent(), std::string(kQuery) + " A0 A1 00 03 64 3F 00 5B 0D 0A");
}

TEST_F(ChipDetection, GivesUpAfterOneSecondOnANamedDevice) {
  orb::test::ReceiverOnTty other(files_.otherTty);
  other.script.on(0x0200).nothing();
  other.line.startChatter(std::chrono::milliseconds(2));
  letPass(1);
  EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(driver_.gpsObtChipDetect("/dev/tty_other"), 0u); }),
            kTimedOut);
  EXPECT_TRUE(hasWaitedToTheLimit());
  EXPECT_EQ(contentOf(files_.errorLog), kNoReplyLine);
}

TEST_F(ChipDetection, DoesNotTakeTheRevisionForAnAcknowledgement) {
  gps_.script.on(0x0200).answer(
      hex("A0 A1 00 0E 80 01 00 01 00 0C 00 01 02 00 00 18 03 0F 9B 0D 0A"));
  letPass(1);
  standardErrorOf([&] { EXPECT_EQ(driver_.gpsObtChipDetect(), 0u); });
  EXPECT_EQ(contentOf(files_.errorLog), kNoReplyLine);
}

TEST_F(ChipDetectionWithoutDevice, FindsNothingOnANamedDeviceEither) {
  EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(driver_.gpsObtChipDetect("/dev/tty_other"), 0u); }),
            kNoDevice);
  EXPECT_EQ(contentOf(files_.errorLog), kNotSentLine);
}

// Orders: nothing is awaited, whatever the receiver says.

class Orders : public orb::test::ReceiverTest {
 protected:
  Orders() { gps_.script.onAny().nothing(); }
  ~Orders() override { EXPECT_EQ(contentOf(files_.errorLog), ""); }

  StampedDriver driver_;
};

TEST_F(Orders, RestartPassesTheFlag) {
  EXPECT_EQ(driver_.restart(true), 0u);
  EXPECT_EQ(sent(), "A0 A1 00 03 64 3F 01 5A 0D 0A");
  EXPECT_EQ(driver_.restart(false), 0u);
  EXPECT_EQ(sent(), "A0 A1 00 03 64 3F 00 5B 0D 0A");
}

constexpr const char* kEmptySoftReset =
    "A0 A1 00 0F 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 0D 0A";
constexpr const char* kSoftResetWithTime =
    "A0 A1 00 0F 01 01 07 BC 01 06 00 00 0A 0E A3 31 00 00 00 2A 0D 0A";
constexpr const char* kSoftResetWithoutTime =
    "A0 A1 00 0F 01 03 00 00 00 00 00 00 00 00 00 00 00 00 00 02 0D 0A";

TEST_F(Orders, SoftResetSetsTheTimeInModeOne) {
  EXPECT_EQ(driver_.gpsObtSendSoftReset(1), 0u);
  EXPECT_EQ(sent(), kSoftResetWithTime);
}

TEST_F(Orders, SoftResetSendsTheModeAloneInModeThree) {
  EXPECT_EQ(driver_.gpsObtSendSoftReset(3), 0u);
  EXPECT_EQ(sent(), kSoftResetWithoutTime);
}

TEST_F(Orders, SoftResetSendsAnEmptyBodyInAnyOtherMode) {
  for (const int mode : {0, 2, 4, 5, 255}) {
    EXPECT_EQ(driver_.gpsObtSendSoftReset(static_cast<unsigned char>(mode)), 0u);
    EXPECT_EQ(sent(), kEmptySoftReset) << "mode " << mode;
  }
}

TEST_F(Orders, ForceRestartIsASoftResetOfTheModesLowByte) {
  EXPECT_EQ(driver_.forceRestart(0x0103), 0u);
  EXPECT_EQ(sent(), kSoftResetWithoutTime);
  EXPECT_EQ(driver_.forceRestart(0xFF01), 0u);
  EXPECT_EQ(sent(), kSoftResetWithTime);
  EXPECT_EQ(driver_.forceRestart(0x0300), 0u);
  EXPECT_EQ(sent(), kEmptySoftReset);
}

TEST_F(Orders, GetResetInfoIsAnEmptySoftReset) {
  EXPECT_EQ(driver_.getResetInfo(), 0u);
  EXPECT_EQ(sent(), kEmptySoftReset);
}

TEST_F(Orders, FactoryDefaultsAreAskedFor) {
  EXPECT_EQ(driver_.gpsObtSetFactoryDefaults(), 0u);
  EXPECT_EQ(sent(), "A0 A1 00 02 04 01 05 0D 0A");
  EXPECT_EQ(driver_.resetorbitekDefaults(), 0u);
  EXPECT_EQ(sent(), "A0 A1 00 02 04 01 05 0D 0A");
}

TEST_F(Orders, FactoryDefaultsCanBeReplacedInASubclass) {
  struct OtherDefaults : StampedDriver {
    unsigned int gpsObtSetFactoryDefaults() override { return 77; }
  };
  OtherDefaults driver;
  EXPECT_EQ(driver.resetorbitekDefaults(), 77u);
  EXPECT_EQ(sent(), "");
}

struct PortSetUp {
  unsigned char port;
  unsigned int baud;
  const char* packet;
};

std::ostream& operator<<(std::ostream& out, const PortSetUp& setUp) {
  return out << "port " << int{setUp.port} << ", " << setUp.baud << " baud";
}

class SerialPortSetUp : public Orders, public testing::WithParamInterface<PortSetUp> {};

TEST_P(SerialPortSetUp, SendsPortAndBaudCode) {
  EXPECT_EQ(driver_.gpsObtSetUartPort(GetParam().port, GetParam().baud), 0u);
  EXPECT_EQ(sent(), GetParam().packet);
}

INSTANTIATE_TEST_SUITE_P(EachRate, SerialPortSetUp,
                         testing::Values(PortSetUp{0, 4800, "A0 A1 00 04 05 00 00 01 04 0D 0A"},
                                         PortSetUp{0, 9600, "A0 A1 00 04 05 00 01 01 05 0D 0A"},
                                         PortSetUp{0, 19200, "A0 A1 00 04 05 00 02 01 06 0D 0A"},
                                         PortSetUp{0, 38400, "A0 A1 00 04 05 00 03 01 07 0D 0A"},
                                         PortSetUp{0, 57600, "A0 A1 00 04 05 00 04 01 00 0D 0A"},
                                         PortSetUp{0, 115200, "A0 A1 00 04 05 00 05 01 01 0D 0A"}),
                         [](const auto& info) {
                           return "Of" + std::to_string(info.param.baud) + "Baud";
                         });

INSTANTIATE_TEST_SUITE_P(
    AnyOtherRateAs9600, SerialPortSetUp,
    testing::Values(PortSetUp{1, 14400, "A0 A1 00 04 05 01 01 01 04 0D 0A"},
                    PortSetUp{1, 0, "A0 A1 00 04 05 01 01 01 04 0D 0A"},
                    PortSetUp{1, 9601, "A0 A1 00 04 05 01 01 01 04 0D 0A"},
                    PortSetUp{1, 230400, "A0 A1 00 04 05 01 01 01 04 0D 0A"},
                    PortSetUp{1, 4294967295U, "A0 A1 00 04 05 01 01 01 04 0D 0A"}),
    [](const auto& info) { return "Of" + std::to_string(info.param.baud) + "Baud"; });

TEST_F(Orders, SerialPortMayHaveAnyNumber) {
  EXPECT_EQ(driver_.gpsObtSetUartPort(255, 9600), 0u);
  EXPECT_EQ(sent(), "A0 A1 00 04 05 FF 01 01 FA 0D 0A");
}

// Orders that a receiver carries out.

class OrderedReceiver : public orb::test::ReceiverTest {
 protected:
  StampedDriver driver_;
};

TEST_F(OrderedReceiver, TakesEachOrder) {
  EXPECT_EQ(driver_.restart(true), 0u);
  EXPECT_EQ(driver_.gpsObtSendSoftReset(1), 0u);
  EXPECT_EQ(driver_.gpsObtSetUartPort(1, 57600), 0u);
  ASSERT_TRUE(gps_.line.waitForMessage(0x0500));
  orb::sim::State state = gps_.receiver.state();
  EXPECT_EQ(state.lastRestart, hex("01"));
  EXPECT_EQ(state.lastSoftReset, hex("01 07 BC 01 06 00 00 0A 0E A3 31 00 00 00"));
  EXPECT_EQ(state.serialPort.port, 1);
  EXPECT_EQ(state.serialPort.baudCode, 4);

  EXPECT_EQ(driver_.gpsObtSetFactoryDefaults(), 0u);
  ASSERT_TRUE(gps_.line.waitForMessage(0x0400));
  state = gps_.receiver.state();
  EXPECT_EQ(state.factoryResets, 1u);
  EXPECT_EQ(state.serialPort.baudCode, 5);
}

// Orders on a device that is not there.

class OrdersWithoutDevice : public orb::test::NoReceiverTest {
 protected:
  /// What one order leaves in the error log and on standard error.
  template <typename Order>
  void expectFailure(Order order, unsigned int result, const std::string& line) {
    StampedDriver driver;
    EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(order(driver), result); }), kNoDevice);
    EXPECT_EQ(contentOf(files_.errorLog), line);
  }
};

TEST_F(OrdersWithoutDevice, RestartNamesNoKnownMessage) {
  expectFailure([](auto& driver) { return driver.restart(true); }, 8,
                "STAMP:  Could not send : 64 3F: Unknown message type\n");
}

TEST_F(OrdersWithoutDevice, SoftResetFails) {
  expectFailure([](auto& driver) { return driver.gpsObtSendSoftReset(1); }, 8,
                "STAMP:  Could not send : 01 00: Force system to restart\n");
}

TEST_F(OrdersWithoutDevice, ForceRestartFails) {
  expectFailure([](auto& driver) { return driver.forceRestart(3); }, 8,
                "STAMP:  Could not send : 01 00: Force system to restart\n");
}

TEST_F(OrdersWithoutDevice, GetResetInfoOnlyLogsItsFailure) {
  expectFailure([](auto& driver) { return driver.getResetInfo(); }, 0,
                "STAMP:  Could not send : 01 00: Force system to restart\n");
}

TEST_F(OrdersWithoutDevice, SerialPortSetUpFails) {
  expectFailure([](auto& driver) { return driver.gpsObtSetUartPort(1, 14400); }, 8,
                "STAMP:  Could not send : 05 00: "
                "Set up serial port COM, baud rate, data bits, stop bits and parity \n");
}

TEST_F(OrdersWithoutDevice, ResetToTheMakersDefaultsFails) {
  expectFailure([](auto& driver) { return driver.resetorbitekDefaults(); }, 8,
                "STAMP:  Could not send : 04 00: Set system to factory default values \n");
}

}  // namespace
