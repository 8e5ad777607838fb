#include "model/solution.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <optional>

#include "model/dilution.h"
#include "model/motion.h"
#include "model/satellites.h"
#include "model/survey.h"

namespace orb::sim {
namespace {

using std::chrono::milliseconds;

constexpr std::uint16_t kUnknownDop = 9990;  // also the largest that is reported

struct Fix {
  FixMode mode = kNoFix;
  Dilution dilution;
};

bool passes(const DopMask& mask, const Dilution& dilution) {
  const std::array<double, 3> dops{dilution.position, dilution.horizontal, dilution.geometric};
  return mask.mode == 0 || std::equal(dops.begin(), dops.end(), mask.limits.begin(),
                                      [](double dop, int limit) { return dop * 10 <= limit; });
}

std::optional<Fix> positionFix(const std::vector<Satellite>& ranging, const State& state) {
  if (const auto dilution = dilutionIn3d(ranging)) {
    return Fix{kFixIn3d, *dilution};
  }
  const FixNavMask& mask = state.fixNavMask;
  const bool flatFixWillDo = (state.startup.hasHadFix ? mask.second : mask.first) != 0;
  const auto dilution = flatFixWillDo ? dilutionIn2d(ranging) : std::nullopt;
  return dilution ? std::optional(Fix{kFixIn2d, *dilution}) : std::nullopt;
}

/// The fix that these satellites allow a receiver with such a timing mode and such masks.
std::optional<Fix> fixFrom(const std::vector<Satellite>& ranging, const State& state) {
  const std::optional<Fix> fix = positionFix(ranging, state);
  if (state.runningTimingMode() == TimingMode::Static && !ranging.empty()) {
    // The place is known, and one satellite tells the time.
    return Fix{kFixIn3d, fix ? fix->dilution : dilutionOfTime(ranging)};
  }
  return fix && passes(state.dopMask, fix->dilution) ? fix : std::nullopt;
}

void dropFix(Navigation& navigation) {
  navigation.fixMode = kNoFix;
  navigation.satellites = 0;
  navigation.dops.fill(kUnknownDop);
}

void setDops(Navigation& navigation, const Dilution& dilution) {
  const auto hundredths = [](double dop) {
    return static_cast<std::uint16_t>(std::lround(std::min(dop * 100, double{kUnknownDop})));
  };
  navigation.dops = {hundredths(dilution.geometric), hundredths(dilution.position),
                     hundredths(dilution.horizontal), hundredths(dilution.vertical),
                     hundredths(dilution.time)};
}

/// Finds the fix and the satellites that it is made of.
void fix(const State& state, Solution& solution) {
  dropFix(solution.navigation);
  const std::vector<Satellite> heard = satellitesHeard(state);
  std::vector<Satellite> ranging;
  std::copy_if(heard.begin(), heard.end(), std::back_inserter(ranging), isRanging);
  if (const auto fix = fixFrom(ranging, state)) {
    const bool corrected = fix->mode == kFixIn3d && ranging.size() != heard.size();
    solution.navigation.fixMode = corrected ? kDifferentialFix : fix->mode;
    solution.navigation.satellites = static_cast<std::uint8_t>(ranging.size());
    setDops(solution.navigation, fix->dilution);
    solution.used = std::move(ranging);
  }
}

bool isOnEarth(const Timing& timing) {
  constexpr float kHighest = 1e6F;  // metres
  return std::abs(timing.latitude) <= 90 && std::abs(timing.longitude) <= 180 &&
         std::abs(timing.altitude) <= kHighest;
}

void setPlace(Navigation& navigation, const Place& place) {
  const auto whole = [](double value) { return static_cast<std::int32_t>(std::lround(value)); };
  const std::int32_t geoid = navigation.ellipsoidAltitude - navigation.meanSeaLevelAltitude;
  navigation.latitude = whole(place.latitude * 1e7);
  navigation.longitude = whole(place.longitude * 1e7);
  navigation.ellipsoidAltitude = whole(place.altitude * 100);
  navigation.meanSeaLevelAltitude = navigation.ellipsoidAltitude - geoid;
}

void forgetPlace(Navigation& navigation) {
  navigation.latitude = 0;
  navigation.longitude = 0;
  navigation.ellipsoidAltitude = 0;
  navigation.meanSeaLevelAltitude = 0;
}

void followAntenna(const State& state, Solution& solution) {
  const Motion motion = antennaMotion(state);
  setPlace(solution.navigation, motion.place);
  solution.velocity = motion.velocity;
}

/// Finds the place, which the timing mode may hold.
void locate(const State& state, Solution& solution) {
  const TimingMode mode = state.runningTimingMode();
  const Timing& timing = state.timing;
  if (mode == TimingMode::Static && isOnEarth(timing)) {
    setPlace(solution.navigation, {timing.latitude, timing.longitude, timing.altitude});
  } else if (mode == TimingMode::AutoSurvey && solution.navigation.fixMode != kNoFix) {
    setPlace(solution.navigation, surveyedPlace(state, solution.navigation));
  } else {
    followAntenna(state, solution);
  }
}

Solution solveAsGiven(const State& state) {
  Solution solution{state.navigation, {}, {}};
  if (!findsSatellites(state)) {
    dropFix(solution.navigation);
  }
  if (!state.track.waypoints.empty()) {
    followAntenna(state, solution);
  }
  return solution;
}

Solution solveFromSky(const State& state) {
  Solution solution{state.navigation, {}, {}};
  fix(state, solution);
  locate(state, solution);
  return solution;
}

}  // namespace

Solution solve(const State& state) {
  Solution solution = state.sky.empty() ? solveAsGiven(state) : solveFromSky(state);
  if (solution.navigation.fixMode == kNoFix) {
    solution.navigation.dops.fill(kUnknownDop);
    solution.velocity = {};
    if (state.startup.cold) {
      forgetPlace(solution.navigation);
    }
  }
  return solution;
}

GpsTime reportedTime(const State& state) {
  return state.startup.cold ? GpsTime{0, milliseconds{0}, state.time.leapSeconds, 0} : state.time;
}

std::uint32_t alignment(const State& state) {
  constexpr std::uint8_t kUtc = 1;
  return state.ppsOutput.alignSource == kUtc ? state.utcOffset : 0;
}

Navigation State::solution() const { return solve(*this).navigation; }

std::vector<Satellite> State::satellitesUsed() const { return solve(*this).used; }

std::optional<Pulses> State::pulses() const {
  constexpr std::uint8_t kWithFix = 1;
  constexpr std::uint8_t kWithSatellite = 2;
  constexpr double kCableDelaysPerNanosecond = 100;
  const Navigation now = solution();
  const bool hearsNone = sky.empty() ? now.satellites == 0 : satellitesHeard(*this).empty();
  const bool held = (ppsOutput.mode == kWithFix && now.fixMode == kNoFix) ||
                    (ppsOutput.mode == kWithSatellite && hearsNone);
  if (held || startup.silence > milliseconds{0}) {
    return std::nullopt;
  }
  return Pulses{ppsPulseWidth, alignment(*this) - cableDelay / kCableDelaysPerNanosecond};
}

}  // namespace orb::sim
