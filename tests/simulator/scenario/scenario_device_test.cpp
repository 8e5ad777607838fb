#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "orb-sim/scenario.h"
#include "simulated_client.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

sim::Scenario parse(const std::string& text) { return sim::parseScenario(text, "f"); }

/// A line on which everything that is drawn from the seed shows.
constexpr char kRandomLine[] = R"(
[line]
latency = "5ms"
spread = "40ms"
[[fault]]
kind = "noise-before"
length = 8
chance = 0.5
[[fault]]
kind = "no-reply"
chance = 0.3
)";

struct Said {
  std::chrono::milliseconds at;
  Bytes bytes;

  bool operator==(const Said&) const = default;
};

/// What a device says, and when, to a client that asks it a few things for ten seconds.
std::vector<Said> conversation(const sim::Scenario& scenario) {
  sim::ScenarioDevice device(scenario);
  std::vector<Said> said;
  for (std::chrono::milliseconds now{0}; now < 10s; now += 1ms) {
    Bytes bytes = device.tick(1ms);
    if (now % 100ms == 0ms) {
      sim::append(
          bytes, device.receive(sim::frame(now % 200ms == 0ms ? kQueryUpdateRate : kQueryGpsTime)));
    }
    if (!bytes.empty()) {
      said.push_back({now, bytes});
    }
  }
  return said;
}

TEST(ScenarioDevice, SaysTheSameInEveryRun) {
  const std::vector<Said> first = conversation(parse(kRandomLine));
  EXPECT_GT(first.size(), 50) << "too little to say anything";
  EXPECT_EQ(first, conversation(parse(kRandomLine)));
}

TEST(ScenarioDevice, SaysSomethingElseWithAnotherSeed) {
  for (const std::string line : {kRandomLine, "line.latency = '5ms'\nline.spread = '40ms'\n"}) {
    EXPECT_NE(conversation(parse(line)), conversation(parse("seed = 2\n" + line))) << line;
  }
}

TEST(ScenarioDevice, SaysNothingWhereItIsSilentOrAbsent) {
  for (const char* presence : {"silent", "absent"}) {
    sim::ScenarioDevice device(parse("device = { talks-from-the-start = true, receiver = '" +
                                     std::string(presence) + "' }\nline.chatter-interval = '1s'"));
    EXPECT_EQ(device.receive(sim::frame(kQueryUpdateRate)), Bytes{}) << presence;
    EXPECT_EQ(device.untilNextOutput(), sim::Device::kNever) << presence;
    EXPECT_EQ(device.tick(1h), Bytes{}) << presence;
    EXPECT_FALSE(device.takeHangUp()) << presence;
  }
}

TEST(ScenarioDevice, TalksFromTheStartWhereItIsToldTo) {
  sim::ScenarioDevice silent(parse(""));
  EXPECT_EQ(silent.tick(3s), Bytes{});
  sim::ScenarioDevice talking(parse("device.talks-from-the-start = true"));
  EXPECT_NE(talking.tick(3s), Bytes{});
}

TEST(ScenarioDevice, HasTheStateThatItWasGiven) {
  EXPECT_EQ(sim::ScenarioDevice(parse("receiver.update-rate = 20")).state().updateRate, 20);
}

TEST(ScenarioDevice, TellsTheFaultsThatHaveHappened) {
  sim::ScenarioDevice device(
      parse("[[fault]]\nkind = 'no-reply'\nmessage = 0x6420\n"
            "[[fault]]\nkind = 'no-reply'\nmessage = 0x1000\nfirst = 2\n"));
  SimulatedClient client(device);
  EXPECT_TRUE(client.ask(kQueryUpdateRate, kUpdateRate));
  EXPECT_FALSE(client.ask(kQueryUpdateRate, kUpdateRate));
  const std::vector<sim::FaultyDevice::Event> events = device.events();
  ASSERT_EQ(events.size(), 1);
  EXPECT_EQ(events[0].rule, 1);
  EXPECT_EQ(events[0].message, kQueryUpdateRate);
}

TEST(ScenarioDevice, DropsTheLineWhereAFaultSaysSo) {
  sim::ScenarioDevice device(parse("[[fault]]\nkind = 'hang-up'\ntimes = 1\n"));
  device.receive(sim::frame(kQueryUpdateRate));
  EXPECT_TRUE(device.takeHangUp());
  EXPECT_FALSE(device.takeHangUp());
}

TEST(ScenarioDevice, TakesNoMoreThanItsLineHolds) {
  sim::ScenarioDevice device(parse("[line]\nbaud = 4800"));
  EXPECT_TRUE(device.takesMore());
  device.receive(Bytes(10000, 0x5A));
  EXPECT_FALSE(device.takesMore());
}

}  // namespace
}  // namespace orb::test
