// How a client tests its own code on a simulated receiver, with the faults of a bad line: with
// GoogleTest, in one process, without any device, and in milliseconds where nothing is lost.

#include <gtest/gtest.h>
#include <orb-gnss/orb-gnss.h>
#include <orb-sim/path_map.h>
#include <orb-sim/pty_line.h>
#include <orb-sim/scenario.h>

#include <string>

// The client's code: sets the elevation mask, and tries again where an answer was lost.
bool setMask(ORBControlInterface& receiver, unsigned char degrees) {
  constexpr unsigned int kRejected = 1;
  unsigned int result = receiver.setElevationLimit(degrees);
  for (int tries = 1; tries < 3 && result > kRejected; ++tries) {
    result = receiver.setElevationLimit(degrees);
  }
  return result == 0;
}

// A driver whose /dev/tty_gps is a simulated receiver.
class Client : public testing::Test {
 protected:
  explicit Client(const std::string& scenario = "")
      : device(orb::sim::parseScenario(scenario, "test")), line(device) {
    orb::sim::mapPath("/dev/tty_gps", line.path());
    orb::sim::mapPath("/var/log/orbset-errors.log", "/dev/null");
  }

  orb::sim::ScenarioDevice device;
  orb::sim::PtyLine line;
};

// Sentences keep coming, so that a lost answer is a time-out and not a wait for ever.
class ClientOnABadLine : public Client {
 protected:
  ClientOnABadLine()
      : Client(
            "[device]\ntalks-from-the-start = true\n"
            "[[fault]]\nkind = \"no-reply\"\nmessage = \"query-elevation-cnr-mask\"\ntimes = 1\n") {
  }
};

TEST_F(Client, SetsTheMask) {
  orbController_QN4470T01 driver;
  EXPECT_TRUE(setMask(driver, 15));
  EXPECT_EQ(device.state().elevationCnrMask.elevation, 15);
}

TEST_F(Client, LeavesTheMaskWhereTheValueIsRefused) {
  orbController_QN4470T01 driver;
  EXPECT_FALSE(setMask(driver, 86));
  EXPECT_TRUE(line.received().empty());
}

TEST_F(ClientOnABadLine, AsksAgainAfterALostAnswer) {
  orbController_QN4470T01 driver;
  EXPECT_TRUE(setMask(driver, 15));
  EXPECT_EQ(device.events().size(), 1U);
}
