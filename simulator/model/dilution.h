#pragma once

#include <optional>
#include <vector>

#include "orb-sim/sky.h"

namespace orb::sim {

/// Dilutions of precision: how much larger the error of a solution is than that of a range.
struct Dilution {
  double geometric = 0;
  double position = 0;
  double horizontal = 0;
  double vertical = 0;
  double time = 0;
};

/// Of a solution for east, north, up and time. Nothing where the satellites do not determine it.
std::optional<Dilution> dilutionIn3d(const std::vector<Satellite>& satellites);

/// Of a solution for east, north and time, at a known altitude.
std::optional<Dilution> dilutionIn2d(const std::vector<Satellite>& satellites);

/// Of a solution for the time alone, at a known place. There must be a satellite.
Dilution dilutionOfTime(const std::vector<Satellite>& satellites);

}  // namespace orb::sim
