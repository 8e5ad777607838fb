#include <gtest/gtest.h>

#include <string>

#include "orb-gnss/module_driver.h"
#include "support/receiver_fixture.h"

namespace orb::test {
namespace {

constexpr const char* kQuery = "A0 A1 00 02 02 01 03 0D 0A";
constexpr const char* kNoReplyLine =
    "STAMP:  Did not receive : 02 00: Query revision information of software\n";
constexpr const char* kNotSentLine =
    "STAMP:  Could not send : 02 00: Query revision information of software\n";

// Detection.

class ChipDetection : public ReceiverTest {
 protected:
  StampedDriver driver_;
};

class ChipDetectionWithoutDevice : public NoReceiverTest {
 protected:
  StampedDriver driver_;
};

TEST_F(ChipDetection, UsesANamedDeviceForThatExchangeOnly) {
  ReceiverOnTty other(files_.otherTty);
  EXPECT_EQ(driver_.gpsObtChipDetect("/dev/tty_other"), 1u);
  EXPECT_EQ(driver_.gpsObtChipDetect(), 1u);
  EXPECT_EQ(driver_.restart(false), 0u);
  EXPECT_EQ(other.sent(), kQuery);
  EXPECT_EQ(sent(), std::string(kQuery) + " A0 A1 00 03 64 3F 00 5B 0D 0A");
}

TEST_F(ChipDetection, GivesUpAfterOneSecondOnANamedDevice) {
  ReceiverOnTty other(files_.otherTty);
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

// Orders.

using OrderedReceiver = ChipDetection;

TEST_F(OrderedReceiver, TakesEachOrder) {
  EXPECT_EQ(driver_.restart(true), 0u);
  EXPECT_EQ(driver_.gpsObtSendSoftReset(1), 0u);
  EXPECT_EQ(driver_.gpsObtSetUartPort(1, 57600), 0u);
  ASSERT_TRUE(gps_.line.waitForMessage(0x0500));
  sim::State state = gps_.receiver.state();
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

TEST_F(OrderedReceiver, IsSetToTheDefaultsByAVirtualMember) {
  struct OtherDefaults : StampedDriver {
    unsigned int gpsObtSetFactoryDefaults() override { return 77; }
  };
  OtherDefaults driver;
  EXPECT_EQ(driver.resetorbitekDefaults(), 77u);
  EXPECT_EQ(sent(), "");
}

}  // namespace
}  // namespace orb::test
