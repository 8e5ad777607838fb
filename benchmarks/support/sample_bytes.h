#pragma once

#include <cstddef>
#include <vector>

namespace orb::bench {

using Bytes = std::vector<unsigned char>;

/// Good packets back to back, as many as fill `length` bytes, each with `payloadLength` bytes of
/// payload. The bodies are random, but hold no start byte.
Bytes packets(std::size_t payloadLength, std::size_t length);

/// NMEA sentences, which hold no start byte.
Bytes textBytes(std::size_t length);

/// Random bytes, the same at every call.
Bytes randomBytes(std::size_t length);

}  // namespace orb::bench
