#pragma once

#include "i2c/port_expander.h"
#include "orb-sim/bytes.h"

namespace orb::test {

/// Writes bytes to the expander's registers from `first` on.
inline void set(sim::PortExpander& expander, std::uint8_t first, const sim::Bytes& bytes) {
  expander.select(first);
  expander.write(bytes.data(), bytes.size());
}

/// Reads on from the register where the last transfer stopped.
inline sim::Bytes read(sim::PortExpander& expander, std::size_t count) {
  sim::Bytes bytes(count);
  expander.read(bytes.data(), count);
  return bytes;
}

/// Both registers of a pair.
inline sim::Bytes pair(sim::PortExpander& expander, std::uint8_t first) {
  expander.select(first);
  return read(expander, 2);
}

}  // namespace orb::test
