#pragma once

#include <cstdint>
#include <vector>

#include "model/geodesy.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// The values of Navigation::fixMode.
enum FixMode : std::uint8_t { kNoFix, kFixIn2d, kFixIn3d, kDifferentialFix };

/// All that navigation output is made of.
struct Solution {
  Navigation navigation;
  EastNorthUp velocity;
  std::vector<Satellite> used;
};

Solution solve(const State& state);

/// The receiver's clock, as it knows it: cold, it knows nothing.
GpsTime reportedTime(const State& state);

/// Nanoseconds from the second of GPS time to that of the receiver, by its time reference.
std::uint32_t alignment(const State& state);

}  // namespace orb::sim
