#include "model/nmea_format.h"

#include <chrono>
#include <cstdlib>
#include <numeric>

#include "model/gps_time.h"
#include "model/solution.h"

namespace orb::sim {
namespace {

/// An angle in 1e-7 degree as degrees and minutes, with its hemisphere: "4822.2740,N".
std::string angle(std::int32_t value, int degreeDigits, const char* hemispheres) {
  constexpr std::int64_t kUnitsPerDegree = 10'000'000;
  constexpr std::int64_t kUnitsPerMinuteFraction = 1000;  // the fraction has four digits
  const std::int64_t magnitude = std::abs(std::int64_t{value});
  const std::int64_t minutes = magnitude % kUnitsPerDegree * 60 / kUnitsPerMinuteFraction;
  return format("%0*d%02d.%04d,%c", degreeDigits, static_cast<int>(magnitude / kUnitsPerDegree),
                static_cast<int>(minutes / 10000), static_cast<int>(minutes % 10000),
                value < 0 ? hemispheres[1] : hemispheres[0]);
}

/// In a leap second, the second before: its hour, minute and day are those of the leap second.
UtcTime dayTime(const GpsTime& time) {
  return utcOf(time) - std::chrono::seconds{isInLeapSecond(time) ? 1 : 0};
}

std::chrono::year_month_day day(const GpsTime& time) {
  return std::chrono::floor<std::chrono::days>(dayTime(time));
}

bool knowsTimeOfDay(const GpsTime& time) { return (time.valid & 0x01) != 0; }
bool knowsDate(const GpsTime& time) { return (time.valid & 0x03) == 0x03; }

}  // namespace

std::string nmeaSentence(const std::string& fields) {
  const unsigned int checksum = std::accumulate(
      fields.begin(), fields.end(), 0U,
      [](unsigned int sum, char byte) { return sum ^ static_cast<unsigned char>(byte); });
  return "$" + fields + format("*%02X\r\n", checksum);
}

std::string nmeaPosition(const Navigation& navigation) {
  if (navigation.fixMode == kNoFix) {
    return ",,,";
  }
  return angle(navigation.latitude, 2, "NS") + "," + angle(navigation.longitude, 3, "EW");
}

std::string nmeaTimeOfDay(const GpsTime& time) {
  if (!knowsTimeOfDay(time)) {
    return {};
  }
  const UtcTime now = dayTime(time);
  const std::chrono::hh_mm_ss clock{now - std::chrono::floor<std::chrono::days>(now)};
  return format("%02d%02d%02d.%03d", static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()) + (isInLeapSecond(time) ? 1 : 0),
                static_cast<int>(clock.subseconds().count()));
}

std::string nmeaDate(const GpsTime& time) {
  if (!knowsDate(time)) {
    return {};
  }
  const std::chrono::year_month_day date = day(time);
  return format("%02u%02u%02d", unsigned{date.day()}, unsigned{date.month()},
                int{date.year()} % 100);
}

std::string nmeaLongDate(const GpsTime& time) {
  if (!knowsDate(time)) {
    return ",,";
  }
  const std::chrono::year_month_day date = day(time);
  return format("%02u,%02u,%04d", unsigned{date.day()}, unsigned{date.month()}, int{date.year()});
}

}  // namespace orb::sim
