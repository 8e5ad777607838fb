#include "model/gps_time.h"

namespace orb::sim {
UtcTime utcOf(const GpsTime& time) {
  return kGpsEpoch + std::chrono::weeks{time.week} + time.timeOfWeek -
         std::chrono::seconds{time.leapSeconds};
}

void setUtc(GpsTime& time, UtcTime utc) {
  const auto sinceEpoch = utc - kGpsEpoch + std::chrono::seconds{time.leapSeconds};
  const auto week = std::chrono::floor<std::chrono::weeks>(sinceEpoch);
  time.week = static_cast<std::uint16_t>(week.count());
  time.timeOfWeek = sinceEpoch - week;
}

}  // namespace orb::sim
