#include "transport/look_schedule.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

using orb::sleepBeforeLook;
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

TEST(LookSchedule, LooksAtOnceSixtyFourTimes) {
  EXPECT_EQ(sleepBeforeLook(0, 0ns), 0ns);
  EXPECT_EQ(sleepBeforeLook(63, 0ns), 0ns);
  EXPECT_EQ(sleepBeforeLook(64, 0ns), 50us);
}

TEST(LookSchedule, DoublesItsFirstSleeps) {
  EXPECT_EQ(sleepBeforeLook(64, 50us), 50us);
  EXPECT_EQ(sleepBeforeLook(64, 100us), 100us);
  EXPECT_EQ(sleepBeforeLook(64, 360us), 360us);
}

TEST(LookSchedule, ThenSleepsATwelfthOfTheTimeSlept) {
  EXPECT_EQ(sleepBeforeLook(64, 1200us), 450us);
  EXPECT_EQ(sleepBeforeLook(64, 12ms), 1350us);
}

TEST(LookSchedule, SleepsFourMillisecondsUpToATenthOfASecond) {
  EXPECT_EQ(sleepBeforeLook(64, 48ms), 4ms);
  EXPECT_EQ(sleepBeforeLook(64, 120ms), 4ms);
}

TEST(LookSchedule, ThenSleepsAThirtiethAndNoMoreThanFifteenMilliseconds) {
  EXPECT_EQ(sleepBeforeLook(64, 300ms), 10ms);
  EXPECT_EQ(sleepBeforeLook(64, 450ms), 15ms);
  EXPECT_EQ(sleepBeforeLook(64, 24h), 15ms);
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
