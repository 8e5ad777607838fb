#pragma once

#include <cstddef>

#include "orb-sim/bytes.h"

namespace orb::sim {

/// So many NMEA sentences of a receiver that stands still, one after the other: GGA, RMC, GSA, ZDA,
/// and from the start again.
Bytes nmeaBurst(std::size_t sentences);

}  // namespace orb::sim
