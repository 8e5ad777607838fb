#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "model/dilution.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// The values of Navigation::fixMode.
enum FixMode : std::uint8_t { kNoFix, kFixIn2d, kFixIn3d, kDifferentialFix };

struct Fix {
  FixMode mode = kNoFix;
  Dilution dilution;
};

/// The fix that these satellites give a receiver with such a timing mode and such masks.
std::optional<Fix> fixFrom(const std::vector<Satellite>& ranging, const State& state);

}  // namespace orb::sim
