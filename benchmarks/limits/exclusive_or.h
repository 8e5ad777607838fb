#pragma once

#include <cstdint>
#include <cstring>

namespace orb::bench {

/// The exclusive-or of all bytes, a word at a time.
inline unsigned char exclusiveOr(const unsigned char* bytes, unsigned long length) {
  std::uint64_t word = 0;
  for (; length >= 8; bytes += 8, length -= 8) {
    std::uint64_t next;
    std::memcpy(&next, bytes, 8);
    word ^= next;
  }
  if ((length & 4) != 0) {
    std::uint32_t next;
    std::memcpy(&next, bytes, 4);
    word ^= next;
    bytes += 4;
  }
  if ((length & 2) != 0) {
    std::uint16_t next;
    std::memcpy(&next, bytes, 2);
    word ^= next;
    bytes += 2;
  }
  if ((length & 1) != 0) {
    word ^= *bytes;
  }
  word ^= word >> 32;
  word ^= word >> 16;
  return static_cast<unsigned char>(word ^ word >> 8);
}

}  // namespace orb::bench
