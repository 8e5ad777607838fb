#pragma once

#include "support/hex_text.h"

// Packets written by hand, for tests of all that reads and carries them.

namespace orb::test {

inline const Bytes kAck = hex("A0 A1 00 02 83 01 82 0D 0A");
inline const Bytes kOtherAck = hex("A0 A1 00 02 83 02 81 0D 0A");
inline const Bytes kBadAck = hex("A0 A1 00 02 83 01 7D 0D 0A");
inline const Bytes kRefusal = hex("A0 A1 00 02 84 01 85 0D 0A");
inline const Bytes kUnknown = hex("A0 A1 00 02 61 01 60 0D 0A");
inline const Bytes kOutputMode = hex("A0 A1 00 03 C3 01 00 C2 0D 0A");
inline const Bytes kBadOutputMode = hex("A0 A1 00 03 C3 01 00 3D 0D 0A");
inline const Bytes kPulseWidth = hex("A0 A1 00 06 65 80 00 98 96 80 6B 0D 0A");

}  // namespace orb::test
