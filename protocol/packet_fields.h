#pragma once

#include <cstdint>
#include <cstring>

#include "orb-gnss/packet.h"
#include "protocol/sub_id.h"

// The fields of a packet, for the library itself: what orb-gnss/packet.h offers to clients, without
// a call.

namespace orb {

inline unsigned short lengthAt(const unsigned char* field) {
  return static_cast<unsigned short>(field[0] << 8 | field[1]);
}

constexpr ORBMsgId idOf(ORBMessageMsgValue type) {
  return {static_cast<unsigned char>(type >> 8), static_cast<unsigned char>(type)};
}

inline ORBMsgId idAt(const unsigned char* field) {
  return {field[0], hasSubId(field[0]) ? field[1] : static_cast<unsigned char>(0)};
}

constexpr ORBMessageMsgValue typeOf(ORBMsgId id) {
  return static_cast<ORBMessageMsgValue>(id.id << 8 | id.subId);
}

template <typename Word>
Word wordAt(const unsigned char* bytes) {
  Word word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

/// Exclusive-or of all bytes: folds eight at a time, then what is left by halves.
inline unsigned char exclusiveOr(const unsigned char* bytes, unsigned long length) {
  std::uint64_t words = 0;
  for (const unsigned char* const wordsEnd = bytes + length - length % 8; bytes != wordsEnd;
       bytes += 8) {
    words ^= wordAt<std::uint64_t>(bytes);
  }
  if ((length & 4) != 0) {
    words ^= wordAt<std::uint32_t>(bytes);
    bytes += 4;
  }
  if ((length & 2) != 0) {
    words ^= wordAt<std::uint16_t>(bytes);
    bytes += 2;
  }
  if ((length & 1) != 0) {
    words ^= *bytes;
  }
  words ^= words >> 32;
  words ^= words >> 16;
  words ^= words >> 8;
  return static_cast<unsigned char>(words);
}

}  // namespace orb
