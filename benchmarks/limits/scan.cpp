#include "limits/scan.h"

#include <cstring>
#include <functional>
#include <numeric>

namespace orb::bench {

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
        std::accumulate(bytes + 4, bytes + 5 + payload, 0, std::bit_xor<>()) == 0) {
      ++good;
      bytes += payload + 7;
    } else {
      bytes += 2;
    }
  }
  return good;
}

}  // namespace orb::bench
