#include <gtest/gtest.h>
#include <termios.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

#include "base/line_speed.h"
#include "orb-sim/scenario.h"
#include "simulator/line/line_client.h"
#include "support/receiver_fixture.h"

// A line whose two ends may have different speeds, on a terminal.

namespace orb::test {
namespace {

using namespace std::chrono_literals;

const Bytes kQuery = sim::frame(0x1500);
const Bytes kAnswer = sim::acknowledge(0x1500) + sim::frame(0xB900, {0});

/// A client that sets the speed of its terminal, as most serial programs do.
struct SpeedyClient : TtyClient {
  using TtyClient::TtyClient;

  unsigned int speed() const {
    termios settings{};
    ::tcgetattr(descriptor(), &settings);
    return baudOf(settings);
  }

  void setSpeed(unsigned int baud) const {
    termios settings{};
    ::tcgetattr(descriptor(), &settings);
    ASSERT_TRUE(setBaud(settings, baud));
    ASSERT_EQ(::tcsetattr(descriptor(), TCSANOW, &settings), 0);
  }
};

/// The device of a scenario that checks the speed, and says nothing unasked.
class LineSpeed : public ::testing::Test {
 protected:
  static sim::Scenario checking(const std::string& more) {
    return sim::parseScenario("receiver.output = 'none'\nline.checks-speed = true\n" + more, "f");
  }

  DeviceFiles files_;
  WallClock clock_;
  sim::ScenarioDevice device_{checking("line.baud = 9600")};
  sim::PtyLine line_{device_, files_.tty};
};

TEST_F(LineSpeed, IsThatOfTheReceiverForAClientThatLeavesItAlone) {
  SpeedyClient client(line_.path());
  EXPECT_EQ(client.speed(), 9600U);
  client.write(kQuery);
  EXPECT_EQ(client.read(kAnswer.size()), kAnswer);

  sim::ScenarioDevice other(checking(""));
  const sim::PtyLine otherLine(other);
  EXPECT_EQ(SpeedyClient(otherLine.path()).speed(), 115200U);
}

TEST_F(LineSpeed, HasToBeThatOfTheReceiver) {
  SpeedyClient client(line_.path());
  client.setSpeed(115200);
  client.write(kQuery);
  ASSERT_TRUE(line_.waitForBytes(kQuery.size()));
  EXPECT_EQ(client.readSome(300ms), Bytes{}) << "the receiver has heard no message";
  client.setSpeed(9600);
  std::this_thread::sleep_for(sim::Receiver::kFrameTimeout);  // what looked like one is given up
  client.readSome(10ms);
  client.write(kQuery);
  EXPECT_EQ(client.read(kAnswer.size()), kAnswer);
}

TEST(LineSpeedOfAScenario, TurnsWhatTheReceiverSaysIntoGarbage) {
  sim::ScenarioDevice device(sim::parseScenario(
      "device.talks-from-the-start = true\nline.checks-speed = true\nline.baud = 9600", "f"));
  sim::PtyLine line(device);
  std::size_t written = 0;
  const auto hears = [&](unsigned int baud) {
    constexpr std::size_t kMoreThanTwoSentences = 200;
    SpeedyClient client(line.path());
    client.setSpeed(baud);
    // The line looks at the speed before it takes a byte; what it held then, it has sent before it
    // takes the next one.
    for (int i = 0; i < 2; ++i) {
      client.write({0});
      EXPECT_TRUE(line.waitForBytes(++written));
    }
    ::tcflush(client.descriptor(), TCIFLUSH);
    return client.read(kMoreThanTwoSentences);
  };
  const Bytes kNextSentence = {'\r', '\n', '$', 'G'};
  EXPECT_FALSE(holds(hears(4800), kNextSentence));
  EXPECT_TRUE(holds(hears(9600), kNextSentence));
}

TEST_F(LineSpeed, FollowsTheSettingThatTheDriverMakes) {
  StampedDriver driver;
  SpeedyClient system(line_.path());
  signed char mask = -1;
  EXPECT_EQ(driver.getMinCNo(mask), 0U);
  ASSERT_EQ(driver.gpsObtSetUartPort(0, 38400), 0U);
  const Bytes acknowledged = sim::acknowledge(0x0500);
  ASSERT_TRUE(holds(system.readUntil(acknowledged), acknowledged));
  EXPECT_EQ(sim::kSerialSpeeds[device_.state().serialPort.baudCode], 38400U);

  system.write(kQuery);
  EXPECT_FALSE(holds(system.read(4096, 300ms), kAnswer));
  system.setSpeed(38400);
  std::this_thread::sleep_for(sim::Receiver::kFrameTimeout);
  system.readSome(10ms);
  EXPECT_EQ(driver.getMinCNo(mask), 0U);
  EXPECT_EQ(mask, 0);
}

TEST(LineSpeedOfAScenario, IsFreeUnlessItIsChecked) {
  sim::ScenarioDevice device(sim::parseScenario("receiver.output = 'none'\nline.baud = 9600", "f"));
  const sim::PtyLine line(device);
  SpeedyClient client(line.path());
  for (const unsigned int baud : {4800U, 9600U, 921600U}) {
    client.setSpeed(baud);
    client.write(kQuery);
    EXPECT_EQ(client.read(kAnswer.size()), kAnswer) << baud;
  }
}

TEST(LineSpeedOfAScenario, IsOneThatTheSerialPortCanHave) {
  sim::Scenario scenario;
  scenario.line.checksSpeed = true;
  scenario.line.baud = 19200;
  EXPECT_EQ(sim::ScenarioDevice(scenario).speed(), 19200U);
  EXPECT_EQ(sim::ScenarioDevice(scenario).state().serialPort.baudCode, 2);
  scenario.line.baud = 230400;
  EXPECT_THROW(sim::ScenarioDevice{scenario}, std::invalid_argument);
}

}  // namespace
}  // namespace orb::test
