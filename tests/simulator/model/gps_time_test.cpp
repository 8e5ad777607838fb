#include "model/gps_time.h"

#include <gtest/gtest.h>

namespace orb::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::sys_days;

// Week 2300 began on 2024-02-04; 345,678 s of it are four days, 1 min and 18 s.
constexpr sim::UtcTime kUtc =
    sys_days{std::chrono::year{2024} / 2 / 8} + std::chrono::minutes{1} + milliseconds{5};
constexpr milliseconds kTimeOfWeek{345'678'005};

TEST(GpsTime, IsAheadOfUtcByTheLeapSeconds) {
  sim::GpsTime time;
  time.week = 2300;
  time.timeOfWeek = kTimeOfWeek;
  time.leapSeconds = 18;
  EXPECT_EQ(sim::utcOf(time), kUtc);
}

TEST(GpsTime, IsSetToUtc) {
  sim::GpsTime time;
  time.leapSeconds = 18;
  sim::setUtc(time, kUtc);
  EXPECT_EQ(time.week, 2300);
  EXPECT_EQ(time.timeOfWeek, kTimeOfWeek);
}

TEST(GpsTime, BeginsAWeekByTheLeapSecondsBeforeUtcDoes) {
  sim::GpsTime time;
  time.leapSeconds = 18;
  sim::setUtc(time, sys_days{std::chrono::year{2024} / 2 / 4} - std::chrono::seconds{18});
  EXPECT_EQ(time.week, 2300);
  EXPECT_EQ(time.timeOfWeek, milliseconds{0});
}

}  // namespace
}  // namespace orb::test
