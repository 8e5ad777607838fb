#include "transport/look_schedule.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <vector>

namespace orb::test {
namespace {

using namespace std::chrono_literals;

constexpr int kLooksAtOnce = 64;

/// The sleeps of a wait, until they add up to `length`.
std::vector<std::chrono::nanoseconds> sleepsOf(std::chrono::nanoseconds length) {
  std::vector<std::chrono::nanoseconds> sleeps;
  for (std::chrono::nanoseconds slept{0}; slept < length; slept += sleeps.back()) {
    sleeps.push_back(sleepBeforeLook(kLooksAtOnce, slept));
  }
  return sleeps;
}

TEST(LookSchedule, SleepsInTimeWithWhatWasSlept) {
  // The looks so far, the time slept so far, and the sleep before the next look.
  const std::tuple<int, std::chrono::nanoseconds, std::chrono::nanoseconds> rows[] = {
      {0, 0ns, 0ns},
      {63, 0ns, 0ns},
      {64, 0ns, 50us},
      // The first sleeps double the time.
      {64, 50us, 50us},
      {64, 100us, 100us},
      {64, 360us, 360us},
      // Then a twelfth of it comes to it, and 4 ms up to a tenth of a second.
      {64, 1200us, 450us},
      {64, 12ms, 1350us},
      {64, 48ms, 4ms},
      {64, 120ms, 4ms},
      // Then a thirtieth of it, and no more than 15 ms.
      {64, 300ms, 10ms},
      {64, 450ms, 15ms},
      {64, 24h, 15ms}};
  for (const auto& [looks, slept, sleep] : rows) {
    EXPECT_EQ(sleepBeforeLook(looks, slept), sleep) << looks << ' ' << slept.count();
  }
}

// A reply is seen late by a small part of its delay, and a silent line costs few wake-ups.
TEST(LookSchedule, WakesUpSeldom) {
  EXPECT_EQ(sleepsOf(20ms).size(), 25u);
  EXPECT_EQ(sleepsOf(5s).size(), 397u);
}

TEST(LookSchedule, NeverShortensASleep) {
  const auto sleeps = sleepsOf(5s);
  EXPECT_TRUE(std::is_sorted(sleeps.begin(), sleeps.end()));
}

}  // namespace
}  // namespace orb::test
