#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <numeric>

#include "model/navigation.h"

namespace orb::sim {
namespace {

// Places of the sentences in Settings::nmeaIntervals.
constexpr std::size_t kGga = 0;
constexpr std::size_t kRmc = 4;

template <typename... Values>
std::string format(const char* pattern, Values... values) {
  std::array<char, 128> text{};
  std::snprintf(text.data(), text.size(), pattern, values...);
  return text.data();
}

/// The prefix of the constellation in use, or of several together.
std::string talker(std::uint16_t constellations) {
  switch (constellations) {
    case 0x01:
      return "GP";
    case 0x02:
      return "GL";
    case 0x04:
      return "GA";
    case 0x08:
      return "GB";
    default:
      return "GN";
  }
}

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

std::string position(const Navigation& navigation) {
  return angle(navigation.latitude, 2, "NS") + "," + angle(navigation.longitude, 3, "EW");
}

std::chrono::sys_time<std::chrono::milliseconds> utc(const GpsTime& time) {
  using namespace std::chrono;
  constexpr sys_days kGpsEpoch = 1980y / January / 6;
  return kGpsEpoch + weeks{time.week} + time.timeOfWeek - seconds{time.leapSeconds};
}

std::string timeOfDay(const GpsTime& time) {
  const auto now = utc(time);
  const std::chrono::hh_mm_ss clock{now - std::chrono::floor<std::chrono::days>(now)};
  return format("%02d%02d%02d.%03d", static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()),
                static_cast<int>(clock.subseconds().count()));
}

std::string date(const GpsTime& time) {
  const std::chrono::year_month_day day{std::chrono::floor<std::chrono::days>(utc(time))};
  return format("%02u%02u%02d", unsigned{day.day()}, unsigned{day.month()}, int{day.year()} % 100);
}

std::string gga(const State& state) {
  const Navigation& navigation = state.navigation;
  constexpr std::uint8_t kDifferential = 3;
  const int quality = navigation.fixMode == 0 ? 0 : navigation.fixMode == kDifferential ? 2 : 1;
  const std::int64_t geoid =
      std::int64_t{navigation.ellipsoidAltitude} - navigation.meanSeaLevelAltitude;
  return "GGA," + timeOfDay(state.time) + "," + position(navigation) +
         format(",%d,%02d,%.1f,%.1f,M,%.1f,M,,", quality, navigation.satellites,
                navigation.dops[2] / 100.0, navigation.meanSeaLevelAltitude / 100.0,
                static_cast<double>(geoid) / 100.0);
}

std::string rmc(const State& state) {
  const bool fixed = state.navigation.fixMode != 0;
  return "RMC," + timeOfDay(state.time) + (fixed ? ",A," : ",V,") + position(state.navigation) +
         ",000.0,000.0," + date(state.time) + (fixed ? ",,,A" : ",,,N");
}

}  // namespace

std::string nmeaSentence(const std::string& fields) {
  const unsigned int checksum = std::accumulate(
      fields.begin(), fields.end(), 0U,
      [](unsigned int sum, char byte) { return sum ^ static_cast<unsigned char>(byte); });
  return "$" + fields + format("*%02X\r\n", checksum);
}

std::string nmeaSentences(const State& state, unsigned int epoch) {
  const auto due = [&](std::size_t sentence) {
    const std::uint8_t interval = state.nmeaIntervals[sentence];
    return interval != 0 && epoch % interval == 0;
  };
  const std::string prefix = talker(state.constellations);
  std::string sentences;
  if (due(kGga)) {
    sentences += nmeaSentence(prefix + gga(state));
  }
  if (due(kRmc)) {
    sentences += nmeaSentence(prefix + rmc(state));
  }
  return sentences;
}

}  // namespace orb::sim
