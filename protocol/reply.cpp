#include "protocol/reply.h"

#include <bit>
#include <cstdint>

namespace orb {

unsigned char Reply::u8(unsigned long index) const {
  return index < message_.getPayloadLength() ? message_.getPayloadData()[index] : 0;
}

unsigned short Reply::u16(unsigned long index) const {
  return static_cast<unsigned short>(u8(index) << 8 | u8(index + 1));
}

unsigned int Reply::u32(unsigned long index) const {
  return static_cast<unsigned int>(u16(index)) << 16 | u16(index + 2);
}

float Reply::f32(unsigned long index) const {
  return std::bit_cast<float>(static_cast<std::uint32_t>(u32(index)));
}

double Reply::f64(unsigned long index) const {
  return std::bit_cast<double>(static_cast<std::uint64_t>(u32(index)) << 32 | u32(index + 4));
}

}  // namespace orb
