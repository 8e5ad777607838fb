#pragma once

#include <initializer_list>

#include "orb-gnss/message.h"
#include "support/hex_text.h"

namespace orb::test {

/// The parts one after the other.
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
