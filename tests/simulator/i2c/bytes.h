#pragma once

#include <cstdint>
#include <vector>

#include "i2c/port_expander.h"

namespace orb::sim {

using ByteList = std::vector<std::uint8_t>;

inline void receive(PortExpander& expander, const ByteList& bytes) {
  expander.receive(bytes.data(), bytes.size());
}

inline ByteList send(PortExpander& expander, std::size_t count) {
  ByteList bytes(count);
  expander.send(bytes.data(), count);
  return bytes;
}

/// What a client reads of a register pair.
inline ByteList pair(PortExpander& expander, std::uint8_t first) {
  receive(expander, {first});
  return send(expander, 2);
}

}  // namespace orb::sim
