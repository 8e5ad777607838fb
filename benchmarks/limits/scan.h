#pragma once

namespace orb::bench {

/// The least that looking for packets can cost: finds start bytes with memchr, looks at the byte
/// after each and, where a packet starts, at its checksum. Returns how many packets are good.
unsigned long countGoodPackets(const unsigned char* bytes, unsigned long length);

}  // namespace orb::bench
