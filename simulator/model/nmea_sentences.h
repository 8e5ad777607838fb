#pragma once

#include <string>

#include "model/solution.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// The NMEA sentences of a solution that are due in the given epoch, counted from 1.
std::string nmeaSentences(const State& state, const Solution& solution, unsigned int epoch);

}  // namespace orb::sim
