#include "model/survey.h"

#include <algorithm>
#include <cmath>

#include "model/motion.h"
#include "model/solution.h"

namespace orb::sim {
namespace {

using std::chrono::milliseconds;

/// How far, in metres, the mean is off for each unit of a dilution of precision.
double rangeDeviation(milliseconds surveyed) {
  constexpr double kOfOneRange = 2;
  return kOfOneRange / std::sqrt(1 + std::chrono::duration<double>(surveyed).count());
}

/// How far the mean may be off, in the unit of the timing setting.
std::uint32_t surveyDeviation(milliseconds surveyed, const Navigation& fix) {
  constexpr double kUnitsPerMetre = 100;
  const double positionDop = fix.dops[1] / 100.0;
  return static_cast<std::uint32_t>(
      std::lround(rangeDeviation(surveyed) * positionDop * kUnitsPerMetre));
}

}  // namespace

TimingMode State::runningTimingMode() const {
  const bool over = surveyed >= std::chrono::seconds{timing.surveyLength};
  return timing.mode == TimingMode::AutoSurvey && over ? TimingMode::Static : timing.mode;
}

void beginSurvey(State& state) { state.surveyed = milliseconds{0}; }

void continueSurvey(State& state, milliseconds elapsed) {
  if (state.runningTimingMode() != TimingMode::AutoSurvey) {
    return;
  }
  const Navigation fix = state.solution();
  if (fix.fixMode == kNoFix) {
    return;
  }
  const milliseconds length = std::chrono::seconds{state.timing.surveyLength};
  state.surveyed = std::min(state.surveyed + elapsed, length);
  const bool hasProgress = !state.sky.empty();
  if (hasProgress) {
    state.timing.standardDeviation = surveyDeviation(state.surveyed, fix);
  }
  if (hasProgress || state.surveyed == length) {
    const Place place = surveyedPlace(state, fix);
    state.timing.latitude = place.latitude;
    state.timing.longitude = place.longitude;
    state.timing.altitude = static_cast<float>(place.altitude);
  }
}

Place surveyedPlace(const State& state, const Navigation& fix) {
  Place place = antennaMotion(state).place;
  if (!state.sky.empty()) {
    const double deviation = rangeDeviation(state.surveyed);
    place.latitude += deviation * fix.dops[2] / 100.0 / metresPerDegree(place).north;
    place.altitude += deviation * fix.dops[3] / 100.0;
  }
  return place;
}

}  // namespace orb::sim
