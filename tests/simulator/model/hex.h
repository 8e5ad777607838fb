#pragma once

#include <sstream>
#include <string>

#include "orb-sim/bytes.h"

namespace orb::test {

using Bytes = sim::Bytes;

/// The bytes that a text like "A0 A1 00 02" names.
inline Bytes hex(const std::string& text) {
  std::istringstream stream(text);
  Bytes bytes;
  for (unsigned int byte = 0; stream >> std::hex >> byte;) {
    bytes.push_back(static_cast<std::uint8_t>(byte));
  }
  return bytes;
}

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

}  // namespace orb::test
