#pragma once

#include "orb-gnss/packet.h"

namespace orb::bench {

/// The least that a lookup by identity can cost: one read of an array, by a call with the
/// arguments of orbGetMessageDescription().
const char* readArray(ORBMsgId id, unsigned short length);

}  // namespace orb::bench
