#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "orb-sim/bytes.h"
#include "orb-sim/settings.h"

namespace orb::sim {

/// The members of a setting that has several. They are declared in the order of the message body.
template <typename Setting>
auto fieldsOf(Setting& setting) {
  if constexpr (std::is_same_v<std::remove_const_t<Setting>, Timing>) {
    auto& [mode, length, deviation, latitude, longitude, altitude] = setting;
    return std::tie(mode, length, deviation, latitude, longitude, altitude);
  } else if constexpr (std::is_same_v<std::remove_const_t<Setting>, ElevationCnrMask>) {
    auto& [mode, elevation, cnr] = setting;
    return std::tie(mode, elevation, cnr);
  } else {
    auto& [first, second] = setting;
    return std::tie(first, second);
  }
}

/// The unsigned number that has the bits of a value.
template <typename Value>
using BitsOf = std::conditional_t<
    sizeof(Value) == 8, std::uint64_t,
    std::conditional_t<sizeof(Value) == 4, std::uint32_t,
                       std::conditional_t<sizeof(Value) == 2, std::uint16_t, std::uint8_t>>>;

/// Reads the fields of a message body from front to back: numbers big-endian, each as wide as its
/// type, arrays and settings member by member. Reading past the end throws std::out_of_range.
class BodyReader {
 public:
  explicit BodyReader(const Bytes& body) : body_(body) {}

  template <typename Value>
  void read(Value& value) {
    if constexpr (!std::is_class_v<Value>) {
      BitsOf<Value> bits = 0;
      for (std::size_t i = 0; i < sizeof(Value); ++i) {
        bits = static_cast<BitsOf<Value>>(std::uint64_t{bits} << 8 | body_.at(position_++));
      }
      value = std::bit_cast<Value>(bits);
    } else {
      std::apply([&](auto&... fields) { (read(fields), ...); }, fieldsOf(value));
    }
  }

  template <typename Value, std::size_t Count>
  void read(std::array<Value, Count>& values) {
    for (Value& value : values) {
      read(value);
    }
  }

 private:
  const Bytes& body_;
  std::size_t position_ = 0;
};

/// Writes the fields of a message body in the same form.
class BodyWriter {
 public:
  template <typename... Values>
  void write(const Values&... values) {
    (writeOne(values), ...);
  }

  /// Writes `width` bytes: the text, cut or filled up with zero bytes.
  void text(std::string_view text, std::size_t width) {
    text = text.substr(0, width);
    body_.insert(body_.end(), text.begin(), text.end());
    body_.resize(body_.size() + width - text.size());
  }

  const Bytes& body() const { return body_; }

 private:
  template <typename Value>
  void writeOne(const Value& value) {
    if constexpr (!std::is_class_v<Value>) {
      const auto bits = std::uint64_t{std::bit_cast<BitsOf<Value>>(value)};
      for (std::size_t left = sizeof(Value); left-- > 0;) {
        body_.push_back(static_cast<std::uint8_t>(bits >> (8 * left) & 0xFF));
      }
    } else {
      std::apply([&](const auto&... fields) { write(fields...); }, fieldsOf(value));
    }
  }

  template <typename Value, std::size_t Count>
  void writeOne(const std::array<Value, Count>& values) {
    for (const Value& value : values) {
      writeOne(value);
    }
  }

  Bytes body_;
};

}  // namespace orb::sim
