#include "model/starts.h"

#include <algorithm>

#include "model/solution.h"
#include "model/survey.h"

namespace orb::sim {
namespace {

using std::chrono::milliseconds;

milliseconds timeToFix(const StartTimes& times, Start start) {
  return start == Start::Hot ? times.hot : start == Start::Warm ? times.warm : times.cold;
}

}  // namespace

void startAnew(State& state, const Settings& saved, Start start) {
  if (state.startup.cold) {
    start = Start::Cold;  // it has learnt nothing since
  }
  static_cast<Settings&>(state) = saved;
  state.startup = {state.startTimes.silence, timeToFix(state.startTimes, start), false,
                   start == Start::Cold};
  beginSurvey(state);
}

void continueStart(State& state, milliseconds elapsed) {
  Startup& startup = state.startup;
  startup.silence -= std::min(startup.silence, elapsed);
  startup.untilFix -= std::min(startup.untilFix, elapsed);
  const bool waitsForFix = !startup.hasHadFix || startup.cold;
  if (waitsForFix && state.solution().fixMode != kNoFix) {
    startup.hasHadFix = true;
    startup.cold = false;
  }
}

}  // namespace orb::sim
