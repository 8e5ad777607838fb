#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "model/gps_time.h"
#include "ready_scenario.h"
#include "simulated_client.h"

// What the descriptions of the ready scenarios promise, in simulated time. What they promise to a
// client of the library is tested in ready_scenarios_driver_test.cpp.

namespace orb::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::Le;
using ::testing::Not;

constexpr std::uint16_t kNavigationData = 0xA800;

std::vector<std::string> names() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(ORB_SIM_SCENARIOS)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string text(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

std::size_t countOf(const std::string& part, const std::string& text) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

TEST(ReadyScenarios, AreTheseAndEachSaysInASentenceWhatItShows) {
  // A scenario that is added needs a test of what it promises.
  ASSERT_THAT(names(),
              ElementsAre("chatty-nmea.toml", "cold-start.toml", "flaky-cable.toml", "healthy.toml",
                          "noisy-line.toml", "old-firmware.toml", "silent.toml", "slow-uart.toml",
                          "talking.toml", "wrong-module.toml"));
  for (const std::string& name : names()) {
    const std::string description =
        sim::loadScenario(std::string(ORB_SIM_SCENARIOS) + '/' + name).description;
    EXPECT_THAT(description, AllOf(EndsWith("."), Not(HasSubstr(". ")))) << name;
  }
}

constexpr milliseconds kOutputDelay{100};

/// What a device says in five seconds to a client that asks it two things.
Bytes fiveSecondsOf(const sim::Scenario& scenario) {
  sim::ScenarioDevice device(scenario);
  Bytes said = device.receive(sim::frame(kQueryUpdateRate));
  sim::append(said, device.receive(sim::frame(kQueryGpsTime)));
  sim::append(said, SimulatedClient(device).listen(5s + kOutputDelay));
  return said;
}

TEST(HealthyScenario, IsTheDeviceThatNobodyHasDescribed) {
  const Bytes said = fiveSecondsOf(readyScenario("healthy"));
  EXPECT_EQ(countOf("$GNRMC", text(said)), 5);
  EXPECT_EQ(said, fiveSecondsOf(sim::Scenario{}));
}

TEST(ColdStartScenario, SaysNothingForTwoSeconds) {
  sim::ScenarioDevice device(readyScenario("cold-start"));
  SimulatedClient client(device);
  EXPECT_FALSE(client.ask(kQueryUpdateRate, kUpdateRate, 1s));
  EXPECT_EQ(client.listen(999ms), Bytes{});
  client.listen(1ms);
  EXPECT_TRUE(client.ask(kQueryUpdateRate, kUpdateRate));
}

TEST(ColdStartScenario, KnowsNeitherTimeNorPlaceForAnotherHalfMinute) {
  constexpr std::size_t kFixMode = 0;
  constexpr std::size_t kValid = 12;
  sim::ScenarioDevice device(readyScenario("cold-start"));
  SimulatedClient client(device);
  const struct {
    std::chrono::seconds until;
    int fixMode;  // as it is then told
    int valid;    // the parts of the time that are
  } kMoments[] = {{3s, 0, 0}, {30s, 0, 0}, {33s, 3, 7}};
  for (const auto& [until, fixMode, valid] : kMoments) {
    client.listen(until - client.now());
    const auto navigation = client.await(kNavigationData, 1100ms);
    const auto time = client.ask(kQueryGpsTime, kGpsTime);
    ASSERT_TRUE(navigation && time);
    EXPECT_EQ(navigation->body().at(kFixMode), fixMode) << client.now().count() << " ms";
    EXPECT_EQ(time->body().at(kValid), valid) << client.now().count() << " ms";
  }
}

/// Whether each of so many queries is answered, by a client that asks once.
std::vector<bool> answersOf(const sim::Scenario& scenario, std::size_t queries) {
  sim::ScenarioDevice device(scenario);
  SimulatedClient client(device);
  std::vector<bool> answers;
  for (std::size_t i = 0; i < queries; ++i) {
    answers.push_back(client.ask(kQueryUpdateRate, kUpdateRate).has_value());
  }
  return answers;
}

TEST(FlakyCableScenario, FailsAClientThatAsksOnceEverySixthTimeOrSo) {
  constexpr std::size_t kQueries = 600;
  const std::vector<bool> answers = answersOf(readyScenario("flaky-cable"), kQueries);
  const auto failures = std::count(answers.begin(), answers.end(), false);
  EXPECT_THAT(failures, AllOf(Ge(kQueries / 8), Le(kQueries / 5)));
  EXPECT_THAT(std::vector<bool>(answers.begin(), answers.begin() + 3),
              ElementsAre(true, true, true))
      << "a client's first exchanges succeed";
  EXPECT_THAT(std::vector<bool>(answers.begin(), answers.begin() + 5), Contains(false))
      << "and it has not to wait long for a failure";
}

// So a call of up to four messages fails at most twice in a row, whether it gives up at a failure
// or carries on.
TEST(FlakyCableScenario, FailsAtMostTwoNeighboursAmongEightQueriesWhateverTheSeed) {
  constexpr std::ptrdiff_t kWindow = 8;
  std::size_t pairs = 0;
  sim::Scenario scenario = readyScenario("flaky-cable");
  for (scenario.seed = 0; scenario.seed < 200; ++scenario.seed) {
    const std::vector<bool> answers = answersOf(scenario, 150);
    for (auto start = answers.begin(); start + kWindow <= answers.end(); ++start) {
      const auto failure = std::find(start, start + kWindow, false);
      const auto failures = std::count(start, start + kWindow, false);
      const bool isPair = failures == 2 && !failure[1];
      pairs += isPair ? 1 : 0;
      EXPECT_TRUE(failures < 2 || isPair) << "seed " << scenario.seed;
    }
  }
  EXPECT_GT(pairs, 0U);
}

TEST(SlowUartScenario, IsNearlyFilledAt9600Baud) {
  constexpr std::size_t kBytesASecond = 960;
  sim::ScenarioDevice device(readyScenario("slow-uart"));
  SimulatedClient client(device);
  client.listen(10s);
  for (int second = 0; second < 20; ++second) {
    const std::size_t count = client.listen(1s).size();
    EXPECT_LE(count, kBytesASecond);
    EXPECT_GE(count, kBytesASecond * 9 / 10);
  }
}

TEST(SlowUartScenario, CanTakeMoreThanASecondForAnAnswer) {
  sim::ScenarioDevice device(readyScenario("slow-uart"));
  SimulatedClient client(device);
  milliseconds longest{0};
  for (int i = 0; i < 100; ++i) {
    client.listen(milliseconds(10 * i));
    const milliseconds asked = client.now();
    ASSERT_TRUE(client.ask(kQueryUpdateRate, kUpdateRate, 5s));
    const milliseconds taken = client.now() - asked;
    EXPECT_GE(taken, 120ms);
    longest = std::max(longest, taken);
  }
  EXPECT_GT(longest, 1s);
  EXPECT_LT(longest, 2s);
}

TEST(ChattyNmeaScenario, SendsSentencesTenTimesASecondFromTheStart) {
  sim::ScenarioDevice device(readyScenario("chatty-nmea"));
  const std::string output = text(SimulatedClient(device).listen(3s + kOutputDelay));
  for (const char* sentence : {"GGA", "GLL", "RMC", "VTG", "ZDA"}) {
    EXPECT_EQ(countOf(std::string("$GN") + sentence, output), 30) << sentence;
  }
  EXPECT_GT(countOf("GSA,", output), 30);
  EXPECT_GT(countOf("GSV,", output), 30);
}

TEST(ChattyNmeaScenario, PutsABurstInFrontOfEverySecondAnswer) {
  sim::ScenarioDevice device(readyScenario("chatty-nmea"));
  EXPECT_EQ(countOf("$", text(device.receive(sim::frame(kQueryUpdateRate)))), 20);
  EXPECT_EQ(countOf("$", text(device.receive(sim::frame(kQueryUpdateRate)))), 0);
}

TEST(TalkingScenario, SendsSentencesOnceASecondFromTheStart) {
  sim::ScenarioDevice device(readyScenario("talking"));
  const std::string output = text(SimulatedClient(device).listen(3s + kOutputDelay));
  for (const char* sentence : {"GGA", "GLL", "RMC", "VTG", "ZDA"}) {
    EXPECT_EQ(countOf(std::string("$GN") + sentence, output), 3) << sentence;
  }
}

TEST(TalkingScenario, HasTheSystemsTime) {
  const auto before = std::chrono::system_clock::now();
  const sim::State state = sim::ScenarioDevice(readyScenario("talking")).state();
  const sim::UtcTime time = sim::utcOf(state.time);
  EXPECT_GE(time + 1ms, before);
  EXPECT_LE(time, std::chrono::system_clock::now());
}

TEST(SilentScenario, NeverSaysAByte) {
  sim::ScenarioDevice device(readyScenario("silent"));
  SimulatedClient client(device);
  EXPECT_FALSE(client.ask(kQueryUpdateRate, kUpdateRate, 10s));
  EXPECT_EQ(device.tick(24h), Bytes{});
}

}  // namespace
}  // namespace orb::test
