#include "support/simulated_sleep.h"

#include <gtest/gtest.h>
#include <time.h>

#include <stdexcept>
#include <thread>

namespace orb::test {
namespace {

using namespace std::chrono_literals;

TEST(SimulatedSleep, CountsSleepsThatTakeNoTime) {
  const auto start = std::chrono::steady_clock::now();
  const SimulatedSleep simulated;
  std::this_thread::sleep_for(1h);
  const timespec duration{3600, 1};
  EXPECT_EQ(clock_nanosleep(CLOCK_MONOTONIC, 0, &duration, nullptr), 0);
  std::this_thread::yield();
  EXPECT_LT(std::chrono::steady_clock::now() - start, 1h);
  EXPECT_EQ(simulated.slept(), 2h + 1ns);
  EXPECT_EQ(simulated.sleeps(), 2);
  EXPECT_EQ(simulated.yields(), 1);
}

TEST(SimulatedSleep, LetsThingsHappenInASleep) {
  SimulatedSleep simulated;
  simulated.onSleep = [](std::chrono::nanoseconds duration) {
    throw std::runtime_error(std::to_string(duration.count()));
  };
  const timespec duration{0, 7};
  EXPECT_THROW(clock_nanosleep(CLOCK_MONOTONIC, 0, &duration, nullptr), std::runtime_error);
}

TEST(SimulatedSleep, EndsWithTheObject) {
  { const SimulatedSleep simulated; }
  const auto start = std::chrono::steady_clock::now();
  std::this_thread::sleep_for(2ms);
  EXPECT_GE(std::chrono::steady_clock::now() - start, 2ms);
}

}  // namespace
}  // namespace orb::test
