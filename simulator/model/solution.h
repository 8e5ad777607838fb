#pragma once

#include <vector>

#include "model/geodesy.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// All that navigation output is made of.
struct Solution {
  Navigation navigation;
  EastNorthUp velocity;
  std::vector<Satellite> used;
};

Solution solve(const State& state);

/// The receiver's clock, as it knows it: cold, it knows nothing.
GpsTime reportedTime(const State& state);

}  // namespace orb::sim
