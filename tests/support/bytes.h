#pragma once

#include <initializer_list>
#include <vector>

#include "orb-gnss/message.h"

namespace orb::test {

using Bytes = std::vector<unsigned char>;

/// The parts one behind the other.
inline Bytes join(std::initializer_list<Bytes> parts) {
  Bytes whole;
  for (const Bytes& part : parts) {
    whole.insert(whole.end(), part.begin(), part.end());
  }
  return whole;
}

/// The whole packet of a message.
inline Bytes packetOf(const ORBMessage& message) {
  return {message.getPacketData(), message.getPacketData() + message.getPacketLength()};
}

}  // namespace orb::test
