#pragma once

#include <cstdint>

#include "orb-sim/state.h"

namespace orb::sim {

/// Nanoseconds from the second of GPS time to that of the receiver, by its time reference.
std::uint32_t alignment(const State& state);

}  // namespace orb::sim
