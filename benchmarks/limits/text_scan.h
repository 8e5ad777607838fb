#pragma once

namespace orb::bench {

/// The least that scanning for a start byte can cost: memchr over the bytes. Returns what it found,
/// or null.
const void* scanForStartByte(const unsigned char* bytes, unsigned long length);

}  // namespace orb::bench
