#pragma once

#include "orb-gnss/message.h"
#include "support/hex_text.h"

namespace orb::test {

/// The whole packet of a message.
inline Bytes packetOf(const ORBMessage& message) {
  return {message.getPacketData(), message.getPacketData() + message.getPacketLength()};
}

}  // namespace orb::test
