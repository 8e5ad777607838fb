#pragma once

#include "model/solution.h"
#include "orb-sim/bytes.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// The binary navigation data packet of a solution.
Bytes navigationData(const State& state, const Solution& solution);

}  // namespace orb::sim
