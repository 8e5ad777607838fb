#include "limits/text_scan.h"

#include <cstring>

namespace orb::bench {

const void* scanForStartByte(const unsigned char* bytes, unsigned long length) {
  return std::memchr(bytes, 0xA0, length);
}

}  // namespace orb::bench
