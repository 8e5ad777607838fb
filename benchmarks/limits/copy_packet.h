#pragma once

#include <cstdint>
#include <cstring>

namespace orb::bench {

/// Copies a word and returns it.
template <typename Word>
std::uint64_t copyWord(const unsigned char* from, unsigned char* to) {
  Word word;
  std::memcpy(&word, from, sizeof word);
  std::memcpy(to, &word, sizeof word);
  return word;
}

/// Copies a packet with `length` bytes of payload, its end bytes aside, which are written anew, and
/// in the same pass takes the exclusive-or. Returns whether the checksum is right.
inline bool copyPacket(const unsigned char* from, unsigned char* to, unsigned long length) {
  std::memcpy(to, from, 4);
  std::memcpy(to + length + 5, "\x0D\x0A", 2);
  std::uint64_t even = 0, odd = 0;
  unsigned long at = 4;
  for (; at + 16 <= length + 5; at += 16) {
    even ^= copyWord<std::uint64_t>(from + at, to + at);
    odd ^= copyWord<std::uint64_t>(from + at + 8, to + at + 8);
  }
  std::uint64_t word = even ^ odd;
  const unsigned long left = length + 5 - at;
  if ((left & 8) != 0) word ^= copyWord<std::uint64_t>(from + at, to + at), at += 8;
  if ((left & 4) != 0) word ^= copyWord<std::uint32_t>(from + at, to + at), at += 4;
  if ((left & 2) != 0) word ^= copyWord<std::uint16_t>(from + at, to + at), at += 2;
  if ((left & 1) != 0) word ^= copyWord<unsigned char>(from + at, to + at);
  word ^= word >> 32;
  word ^= word >> 16;
  return static_cast<unsigned char>(word ^ word >> 8) == 0;
}

}  // namespace orb::bench
