#pragma once

#include "model/geodesy.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// Begins a survey anew, where the timing mode asks for one.
void beginSurvey(State& state);

/// Goes on with a survey that is under way, unless there is no fix. Under a sky, the mean so far
/// and its deviation become those of the timing setting; without one, the place is exact and does
/// so at the end, when the receiver is static there.
void continueSurvey(State& state, std::chrono::milliseconds elapsed);

/// The mean of the places measured since the survey began: off by the error of a single fix at
/// first, and closer to the antenna the longer the survey lasts.
Place surveyedPlace(const State& state, const Navigation& fix);

}  // namespace orb::sim
