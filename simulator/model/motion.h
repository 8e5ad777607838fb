#pragma once

#include "model/geodesy.h"
#include "orb-sim/state.h"

namespace orb::sim {

struct Motion {
  Place place;
  EastNorthUp velocity;
};

/// The place that a navigation solution tells.
Place placeOf(const Navigation& navigation);

/// Where the antenna is at this moment, and how it moves.
Motion antennaMotion(const State& state);

}  // namespace orb::sim
