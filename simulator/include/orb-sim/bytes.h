#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

/// The simulated receiver, its faults, lines, scenarios and traces, for test programs.
namespace orb::sim {

/// Bytes of the line.
using Bytes = std::vector<std::uint8_t>;

/// Adds `more` at the end.
inline void append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

/// Takes at most `count` bytes off the front.
inline Bytes takeFirst(Bytes& bytes, std::size_t count) {
  const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(std::min(count, bytes.size()));
  Bytes first(bytes.begin(), end);
  bytes.erase(bytes.begin(), end);
  return first;
}

}  // namespace orb::sim
