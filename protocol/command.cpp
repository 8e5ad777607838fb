#include "protocol/command.h"

#include <bit>
#include <cstdint>
#include <utility>

namespace orb {

Command&& Command::u8(unsigned int value) && {
  message_.setByte(next_++, static_cast<unsigned char>(value));
  return std::move(*this);
}

Command&& Command::u16(unsigned int value) && { return std::move(*this).u8(value >> 8).u8(value); }

Command&& Command::u32(unsigned int value) && {
  return std::move(*this).u16(value >> 16).u16(value);
}

Command&& Command::f32(float value) && {
  return std::move(*this).u32(std::bit_cast<std::uint32_t>(value));
}

Command&& Command::f64(double value) && {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  return std::move(*this)
      .u32(static_cast<std::uint32_t>(bits >> 32))
      .u32(static_cast<std::uint32_t>(bits));
}

Command&& Command::repeated(unsigned int count, unsigned int value) && {
  for (; count > 0; --count) {
    std::move(*this).u8(value);
  }
  return std::move(*this);
}

}  // namespace orb
