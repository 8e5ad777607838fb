#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "orb-sim/bytes.h"

namespace orb::test {

/// The fields of a message from its id byte on, big-endian; what it does not have reads as 0.
class Payload {
 public:
  explicit Payload(sim::Bytes bytes) : bytes_(std::move(bytes)) {}

  unsigned int u8(std::size_t index) const { return static_cast<unsigned int>(number(index, 1)); }
  unsigned int u16(std::size_t index) const { return static_cast<unsigned int>(number(index, 2)); }
  unsigned int u32(std::size_t index) const { return static_cast<unsigned int>(number(index, 4)); }
  float f32(std::size_t index) const { return std::bit_cast<float>(u32(index)); }
  double f64(std::size_t index) const { return std::bit_cast<double>(number(index, 8)); }

 private:
  std::uint64_t number(std::size_t index, std::size_t width) const {
    std::uint64_t value = 0;
    for (std::size_t i = index; i < index + width; ++i) {
      value = value << 8 | (i < bytes_.size() ? bytes_[i] : 0U);
    }
    return value;
  }

  sim::Bytes bytes_;
};

}  // namespace orb::test
