#include "model/solution.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "model/fix.h"
#include "model/motion.h"
#include "model/satellites.h"
#include "model/survey.h"

namespace orb::sim {
namespace {

using std::chrono::milliseconds;

constexpr std::uint16_t kUnknownDop = 9990;  // also the largest that is reported

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
  if (state.startup.untilFix > milliseconds{0}) {
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

Navigation State::solution() const { return solve(*this).navigation; }

std::vector<Satellite> State::satellitesUsed() const { return solve(*this).used; }

}  // namespace orb::sim
