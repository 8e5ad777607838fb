#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "orb-gnss/module_driver.h"
#include "support/input.h"

namespace orb::test {

/// The fields of a payload; what it does not have reads as 0.
class Payload {
 public:
  explicit Payload(Bytes bytes) : bytes_(std::move(bytes)) {}

  std::uint64_t number(std::size_t index, std::size_t width) const {
    std::uint64_t value = 0;
    for (std::size_t i = index; i < index + width; ++i) {
      value = value * 256 + (i < bytes_.size() ? bytes_[i] : 0U);
    }
    return value;
  }
  unsigned int u8(std::size_t index) const { return static_cast<unsigned int>(number(index, 1)); }
  unsigned int u16(std::size_t index) const { return static_cast<unsigned int>(number(index, 2)); }
  unsigned int u32(std::size_t index) const { return static_cast<unsigned int>(number(index, 4)); }
  float f32(std::size_t index) const { return std::bit_cast<float>(u32(index)); }
  double f64(std::size_t index) const { return std::bit_cast<double>(number(index, 8)); }

 private:
  Bytes bytes_;
};

/// A query of the driver. Outcomes are the result and the outputs, as one text.
struct DriverQuery {
  ORBMessageMsgValue reply;                      ///< the message that it awaits
  std::string (*ask)(orbController_QN4470T01&);  ///< asks, and tells the outcome
  std::string (*expected)(const Payload&);       ///< with this reply
  const char* unanswered;                        ///< without one
};

/// Every query that awaits one message.
std::span<const DriverQuery> driverQueries();

}  // namespace orb::test
