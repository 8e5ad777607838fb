#include "model/solution.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "model/dilution.h"
#include "model/motion.h"
#include "model/satellites.h"
#include "model/survey.h"

namespace orb::sim {
namespace {

using std::chrono::milliseconds;

enum FixMode : std::uint8_t { kNoFix, kFixIn2d, kFixIn3d, kDifferentialFix };

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

bool passes(const DopMask& mask, const Dilution& dilution) {
  const std::array<double, 3> dops{dilution.position, dilution.horizontal, dilution.geometric};
  return mask.mode == 0 || std::equal(dops.begin(), dops.end(), mask.limits.begin(),
                                      [](double dop, int limit) { return dop * 10 <= limit; });
}

/// The fix that so many satellites and the masks allow.
void fixFrom(const std::vector<Satellite>& used, bool corrected, const State& state,
             Navigation& navigation) {
  const FixNavMask& mask = state.fixNavMask;
  const bool flatFixWillDo = (state.startup.hasHadFix ? mask.second : mask.first) != 0;
  std::optional<Dilution> dilution = dilutionIn3d(used);
  FixMode mode = corrected ? kDifferentialFix : kFixIn3d;
  if (!dilution && flatFixWillDo) {
    dilution = dilutionIn2d(used);
    mode = kFixIn2d;
  }
  if (state.runningTimingMode() == TimingMode::Static && !used.empty()) {
    // The place is known, and one satellite tells the time.
    setDops(navigation, dilution ? *dilution : dilutionOfTime(used));
    navigation.fixMode = corrected ? kDifferentialFix : kFixIn3d;
  } else if (dilution && passes(state.dopMask, *dilution)) {
    setDops(navigation, *dilution);
    navigation.fixMode = mode;
  }
}

bool isOnEarth(const Timing& timing) {
  return std::abs(timing.latitude) <= 90 && std::abs(timing.longitude) <= 180 &&
         std::abs(timing.altitude) <= 1e6F;
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

/// The place and the motion that the timing mode makes of those of the antenna.
void locate(const State& state, Solution& solution) {
  const TimingMode mode = state.runningTimingMode();
  const Timing& timing = state.timing;
  if (mode == TimingMode::Static && isOnEarth(timing)) {
    setPlace(solution.navigation, {timing.latitude, timing.longitude, timing.altitude});
  } else if (mode == TimingMode::AutoSurvey && solution.navigation.fixMode != kNoFix) {
    setPlace(solution.navigation, surveyedPlace(state, solution.navigation));
  } else {
    const Motion motion = antennaMotion(state);
    setPlace(solution.navigation, motion.place);
    solution.velocity = motion.velocity;
  }
}

Solution solveFromSky(const State& state) {
  Solution solution{state.navigation, {}, {}};
  dropFix(solution.navigation);
  const std::vector<Satellite> heard = satellitesHeard(state);
  std::copy_if(heard.begin(), heard.end(), std::back_inserter(solution.used), isRanging);
  fixFrom(solution.used, solution.used.size() != heard.size(), state, solution.navigation);
  if (solution.navigation.fixMode == kNoFix) {
    solution.used.clear();
  }
  solution.navigation.satellites = static_cast<std::uint8_t>(solution.used.size());
  locate(state, solution);
  return solution;
}

Solution solveAsGiven(const State& state) {
  Solution solution{state.navigation, {}, {}};
  if (state.startup.untilFix > milliseconds{0}) {
    dropFix(solution.navigation);
  }
  if (!state.track.waypoints.empty()) {
    const Motion motion = antennaMotion(state);
    setPlace(solution.navigation, motion.place);
    solution.velocity = motion.velocity;
  }
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
