#include "model/nmea_sentences.h"

#include <cmath>
#include <iterator>
#include <string_view>

#include "model/nmea_format.h"
#include "model/nmea_satellites.h"
#include "model/solution.h"

namespace orb::sim {
namespace {

/// What a sentence is made from.
struct Report {
  const State& state;
  const Solution& solution;
  const Navigation& navigation;
  const GpsTime time;
  const std::string talker;  ///< the prefix of the constellation in use, or of several together

  bool hasFix() const { return navigation.fixMode != kNoFix; }
  const char* status() const { return hasFix() ? "A" : "V"; }
  const char* mode() const {
    return navigation.fixMode == kDifferentialFix ? "D" : hasFix() ? "A" : "N";
  }
};

std::string talkerOf(std::uint16_t constellations) {
  constexpr std::string_view kTalkers[] = {"GN", "GP", "GL", "GN", "GA", "GN", "GN", "GN", "GB"};
  return std::string(constellations < std::size(kTalkers) ? kTalkers[constellations] : "GN");
}

// Per metre per second.
constexpr double kKnots = 3600.0 / 1852;
constexpr double kKilometresPerHour = 3.6;

/// The speed over ground, empty without a fix.
std::string speed(const Report& report, double unit) {
  const EastNorthUp& velocity = report.solution.velocity;
  return report.hasFix() ? format("%05.1f", std::hypot(velocity.east, velocity.north) * unit) : "";
}

/// The course over ground, in tenths of a degree from north through east.
std::string course(const Report& report) {
  if (!report.hasFix()) {
    return {};
  }
  const EastNorthUp& velocity = report.solution.velocity;
  const double degrees = std::atan2(velocity.east, velocity.north) / kRadiansPerDegree;
  const int tenths = static_cast<int>(std::lround(degrees * 10) + 3600) % 3600;
  return format("%03d.%d", tenths / 10, tenths % 10);
}

std::string gga(const Report& report) {
  const Navigation& navigation = report.navigation;
  const int quality = !report.hasFix() ? 0 : navigation.fixMode == kDifferentialFix ? 2 : 1;
  const std::int64_t geoid =
      std::int64_t{navigation.ellipsoidAltitude} - navigation.meanSeaLevelAltitude;
  return nmeaSentence(
      report.talker + "GGA," + nmeaTimeOfDay(report.time) + "," + nmeaPosition(navigation) +
      format(",%d,%02d,%.1f,", quality, report.hasFix() ? navigation.satellites : 0,
             navigation.dops[2] / 100.0) +
      (report.hasFix() ? format("%.1f,M,%.1f,M,,", navigation.meanSeaLevelAltitude / 100.0,
                                static_cast<double>(geoid) / 100.0)
                       : ",,,,,"));
}

std::string gll(const Report& report) {
  return nmeaSentence(report.talker + "GLL," + nmeaPosition(report.navigation) + "," +
                      nmeaTimeOfDay(report.time) + "," + report.status() + "," + report.mode());
}

std::string rmc(const Report& report) {
  return nmeaSentence(report.talker + "RMC," + nmeaTimeOfDay(report.time) + "," + report.status() +
                      "," + nmeaPosition(report.navigation) + "," + speed(report, kKnots) + "," +
                      course(report) + "," + nmeaDate(report.time) + ",,," + report.mode());
}

std::string vtg(const Report& report) {
  const std::string fields = report.hasFix() ? course(report) + ",T,,M," + speed(report, kKnots) +
                                                   ",N," + speed(report, kKilometresPerHour) + ",K,"
                                             : ",,,,,,,,";
  return nmeaSentence(report.talker + "VTG," + fields + report.mode());
}

std::string zda(const Report& report) {
  return nmeaSentence(report.talker + "ZDA," + nmeaTimeOfDay(report.time) + "," +
                      nmeaLongDate(report.time) + ",00,00");
}

// In the order of Settings::nmeaIntervals.
constexpr std::string (*kSentences[])(const Report&) = {
    gga,
    [](const Report& report) { return gsaSentences(report.solution, report.talker); },
    [](const Report& report) { return gsvSentences(report.state); },
    gll,
    rmc,
    vtg,
    zda,
};

}  // namespace

std::string nmeaSentences(const State& state, const Solution& solution, unsigned int epoch) {
  const Report report{state, solution, solution.navigation, reportedTime(state),
                      talkerOf(state.constellations)};
  std::string sentences;
  for (std::size_t kind = 0; kind < std::size(kSentences); ++kind) {
    const std::uint8_t interval = state.nmeaIntervals[kind];
    if (interval != 0 && epoch % interval == 0) {
      sentences += kSentences[kind](report);
    }
  }
  return sentences;
}

}  // namespace orb::sim
