#include "limits/scan.h"

#include <cstring>

#include "limits/exclusive_or.h"

namespace orb::bench {

const void* findStartByte(const unsigned char* bytes, unsigned long length) {
  return std::memchr(bytes, 0xA0, length);
}

unsigned long countGoodPackets(const unsigned char* bytes, unsigned long length) {
  unsigned long good = 0;
  const unsigned char* const end = bytes + length;
  while (end - bytes >= 7) {
    const void* const found = std::memchr(bytes, 0xA0, static_cast<unsigned long>(end - bytes) - 6);
    if (found == nullptr) {
      break;
    }
    bytes = static_cast<const unsigned char*>(found);
    if (bytes[1] != 0xA1) {
      bytes += 2;
      continue;
    }
    const unsigned long payload = static_cast<unsigned long>(bytes[2] << 8 | bytes[3]);
    if (static_cast<unsigned long>(end - bytes) >= payload + 7 &&
        exclusiveOr(bytes + 4, payload) == bytes[4 + payload]) {
      ++good;
      bytes += payload + 7;
    } else {
      bytes += 2;
    }
  }
  return good;
}

}  // namespace orb::bench
