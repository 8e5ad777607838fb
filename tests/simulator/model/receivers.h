#pragma once

#include <tuple>

#include "orb-sim/receiver.h"
#include "support/hex_text.h"

namespace orb::test {

inline sim::State underOrdinarySky() {
  sim::State state;
  state.sky = sim::ordinarySky();
  return state;
}

/// The body of the reply that follows a query's acknowledgement.
inline Bytes replyTo(std::uint16_t query, sim::Receiver& receiver) {
  return sim::FrameReader().push(receiver.receive(sim::frame(query))).at(1).body();
}

/// All members, to be compared.
inline auto valuesOf(const sim::Navigation& navigation) {
  const auto& [fix, satellites, latitude, longitude, ellipsoid, seaLevel, dops] = navigation;
  return std::tuple(fix, satellites, latitude, longitude, ellipsoid, seaLevel, dops);
}

}  // namespace orb::test
