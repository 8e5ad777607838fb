#pragma once

#include <vector>

#include "orb-sim/state.h"

namespace orb::sim {

/// Whether signals reach the receiver, and it has found them after its start.
bool findsSatellites(const State& state);

/// The satellites of enabled constellations above the horizon, each as strong as interference
/// leaves it. None while the receiver does not find them.
std::vector<Satellite> satellitesInView(const State& state);

/// Those in view that are heard and that the masks let pass.
std::vector<Satellite> satellitesHeard(const State& state);

/// SBAS satellites bring corrections; they are no part of a solution.
inline bool isRanging(const Satellite& satellite) {
  return satellite.constellation != Constellation::Sbas;
}

}  // namespace orb::sim
