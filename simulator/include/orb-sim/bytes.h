#pragma once

#include <cstdint>
#include <vector>

namespace orb::sim {

using Bytes = std::vector<std::uint8_t>;

inline void append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

}  // namespace orb::sim
