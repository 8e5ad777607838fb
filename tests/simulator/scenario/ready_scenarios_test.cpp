#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

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
  ASSERT_THAT(names(), ElementsAre("chatty-nmea.toml", "cold-start.toml", "flaky-cable.toml",
                                   "healthy.toml", "noisy-line.toml", "old-firmware.toml",
                                   "silent.toml", "slow-uart.toml", "wrong-module.toml"));
  for (const std::string& name : names()) {
    const std::string description =
        sim::loadScenario(std::string(ORB_SIM_SCENARIOS) + '/' + name).description;
    EXPECT_THAT(description, AllOf(EndsWith("."), Not(HasSubstr(". ")))) << name;
  }
}

/// What a device says in five seconds to a client that asks it two things.
Bytes fiveSecondsOf(const sim::Scenario& scenario) {
  sim::ScenarioDevice device(scenario);
  Bytes said = device.receive(sim::frame(kQueryUpdateRate));
  sim::append(said, device.receive(sim::frame(kQueryGpsTime)));
  sim::append(said, SimulatedClient(device).listen(5s));
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
  client.listen(2s);
  while (client.now() < 31s) {
    const auto navigation = client.await(kNavigationData, 1100ms);
    ASSERT_TRUE(navigation);
    EXPECT_EQ(navigation->body().at(kFixMode), 0) << client.now().count() << " ms";
    const auto time = client.ask(kQueryGpsTime, kGpsTime);
    ASSERT_TRUE(time);
    EXPECT_EQ(time->body().at(kValid), 0) << client.now().count() << " ms";
  }
  client.listen(33s - client.now());
  const auto navigation = client.await(kNavigationData, 1100ms);
  ASSERT_TRUE(navigation);
  EXPECT_EQ(navigation->body().at(kFixMode), 3) << "3D with corrections";
  const auto time = client.ask(kQueryGpsTime, kGpsTime);
  ASSERT_TRUE(time);
  EXPECT_EQ(time->body().at(kValid), 7);
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

enum class AfterAFailure { GiveUp, CarryOn };

/// How many tries a call of so many messages takes at most, wherever among the answers it begins,
/// that is made again until each of its messages has been answered.
std::size_t mostTries(const std::vector<bool>& answers, std::size_t messages, AfterAFailure then) {
  std::size_t most = 0;
  for (std::size_t start = 0; start < answers.size(); ++start) {
    std::size_t tries = 1;
    for (std::size_t at = start; at + messages <= answers.size(); ++tries) {
      const auto begin = answers.begin() + static_cast<std::ptrdiff_t>(at);
      const auto end = begin + static_cast<std::ptrdiff_t>(messages);
      const auto failure = std::find(begin, end, false);
      if (failure == end) {
        most = std::max(most, tries);
        break;
      }
      at +=
          then == AfterAFailure::CarryOn ? messages : static_cast<std::size_t>(failure - begin) + 1;
    }
    // Where the answers end before the call has succeeded, its tries count if they are too many.
    most = std::max(most, tries - 1);
  }
  return most;
}

TEST(FlakyCableScenario, FailsAClientThatAsksOnceEverySixthTimeOrSo) {
  constexpr std::size_t kQueries = 600;
  const std::vector<bool> answers = answersOf(readyScenario("flaky-cable"), kQueries);
  const auto failures = std::count(answers.begin(), answers.end(), false);
  EXPECT_THAT(failures, AllOf(Ge(kQueries / 8), Le(kQueries / 5)));
  EXPECT_THAT(std::vector<bool>(answers.begin(), answers.begin() + 3),
              ElementsAre(true, true, true))
      << "a client's first exchanges succeed";
}

TEST(FlakyCableScenario, FailsTheSameQueriesInEveryRun) {
  EXPECT_EQ(answersOf(readyScenario("flaky-cable"), 100),
            answersOf(readyScenario("flaky-cable"), 100));
}

TEST(FlakyCableScenario, FailsAmongTheFirstFiveQueriesWithItsOwnSeed) {
  const std::vector<bool> answers = answersOf(readyScenario("flaky-cable"), 5);
  EXPECT_THAT(answers, Contains(false));
}

TEST(FlakyCableScenario, LetsACallOfUpToFourMessagesSucceedInThreeTriesWhateverTheSeed) {
  constexpr std::size_t kTries = 3;
  sim::Scenario scenario = readyScenario("flaky-cable");
  for (scenario.seed = 0; scenario.seed < 200; ++scenario.seed) {
    const std::vector<bool> answers = answersOf(scenario, 150);
    for (std::size_t messages = 1; messages <= 4; ++messages) {
      for (const AfterAFailure then : {AfterAFailure::GiveUp, AfterAFailure::CarryOn}) {
        EXPECT_LE(mostTries(answers, messages, then), kTries)
            << "seed " << scenario.seed << ", " << messages << " messages";
      }
    }
  }
}

TEST(FlakyCableScenario, FailsTwoTriesInARowNowAndThen) {
  const std::vector<bool> answers = answersOf(readyScenario("flaky-cable"), 150);
  EXPECT_EQ(mostTries(answers, 1, AfterAFailure::GiveUp), 3);
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
    client.listen(370ms);
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
  const std::string output = text(SimulatedClient(device).listen(3s));
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

TEST(SilentScenario, NeverSaysAByte) {
  sim::ScenarioDevice device(readyScenario("silent"));
  SimulatedClient client(device);
  EXPECT_FALSE(client.ask(kQueryUpdateRate, kUpdateRate, 10s));
  EXPECT_EQ(device.tick(24h), Bytes{});
}

}  // namespace
}  // namespace orb::test
