#include "model/gps_time.h"

#include <algorithm>

namespace orb::sim {
namespace {

using std::chrono::milliseconds;
using std::chrono::weeks;

void setSinceEpoch(GpsTime& time, milliseconds sinceEpoch) {
  const auto week = std::chrono::floor<weeks>(sinceEpoch);
  time.week = static_cast<std::uint16_t>(week.count());
  time.timeOfWeek = sinceEpoch - week;
}

}  // namespace

UtcTime utcOf(const GpsTime& time) {
  return kGpsEpoch + weeks{time.week} + time.timeOfWeek - std::chrono::seconds{time.leapSeconds};
}

void setUtc(GpsTime& time, UtcTime utc) {
  setSinceEpoch(time, utc - kGpsEpoch + std::chrono::seconds{time.leapSeconds});
}

void advance(GpsTime& time, milliseconds elapsed) {
  setSinceEpoch(time, std::max(weeks{time.week} + time.timeOfWeek + elapsed, milliseconds{0}));
  if (time.leapSecond && utcOf(time) >= *time.leapSecond + std::chrono::seconds{1}) {
    ++time.leapSeconds;
    time.leapSecond.reset();
  }
}

milliseconds untilSecondOf(const GpsTime& time) {
  constexpr std::chrono::seconds kSecond{1};
  return kSecond - time.timeOfWeek % kSecond;
}

milliseconds between(const GpsTime& from, const GpsTime& to) {
  return weeks{to.week} - weeks{from.week} + to.timeOfWeek - from.timeOfWeek;
}

bool isInLeapSecond(const GpsTime& time) {
  return time.leapSecond && utcOf(time) >= *time.leapSecond;
}

}  // namespace orb::sim
