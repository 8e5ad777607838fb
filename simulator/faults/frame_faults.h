#pragma once

#include <cstddef>

#include "faults/draw.h"
#include "orb-sim/bytes.h"
#include "orb-sim/frame.h"

namespace orb::sim {

// Damage to the packet of one frame. A packet that other damage has left too short for it stays as
// it is.

/// Puts another message's id in the place of the id, and of the sub-id where there is one: the
/// power mode's or the navigation mode's; in theirs the update rate's or the second band's. The
/// checksum fits.
void giveWrongId(Bytes& packet);

/// Inverts the checksum.
void breakChecksum(Bytes& packet);

/// Lets the length field claim `more` bytes more, at most 65535 in all.
void raiseLength(Bytes& packet, std::size_t more);

/// Puts bytes into the middle, before the second half.
void insertInMiddle(Bytes& packet, const Bytes& bytes);

/// Random bytes.
Bytes noise(std::size_t count, Draw& draw);

/// So many NMEA sentences of a receiver that stands still: GGA, RMC, GSA, ZDA, and from the start
/// again.
Bytes nmeaBurst(std::size_t sentences);

/// Turns one bit over in a message's body, but not in its last byte where there are more: most
/// settings end with their attribute byte. A message without a body stays as it is.
void turnOneBit(Frame& message, Draw& draw);

}  // namespace orb::sim
