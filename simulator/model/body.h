#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "orb-sim/bytes.h"

namespace orb::sim {

/// Reads the fields of a message body from front to back, big-endian. Reading past the end throws
/// std::out_of_range.
class BodyReader {
 public:
  explicit BodyReader(const Bytes& body) : body_(body) {}

  bool atEnd() const { return position_ >= body_.size(); }

  std::uint8_t u8() { return body_.at(position_++); }
  std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
  std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
  std::int32_t i32() { return std::bit_cast<std::int32_t>(u32()); }
  float f32() { return std::bit_cast<float>(u32()); }
  double f64() { return std::bit_cast<double>(number(8)); }

  template <std::size_t Count>
  void bytes(std::array<std::uint8_t, Count>& field) {
    for (std::uint8_t& byte : field) {
      byte = u8();
    }
  }

 private:
  std::uint64_t number(int width) {
    std::uint64_t value = 0;
    for (; width > 0; --width) {
      value = value << 8 | u8();
    }
    return value;
  }

  const Bytes& body_;
  std::size_t position_ = 0;
};

/// Writes the fields of a message body from front to back, big-endian.
class BodyWriter {
 public:
  BodyWriter& u8(std::uint8_t value) { return number(value, 1); }
  BodyWriter& u16(std::uint16_t value) { return number(value, 2); }
  BodyWriter& u32(std::uint32_t value) { return number(value, 4); }
  BodyWriter& i32(std::int32_t value) { return u32(std::bit_cast<std::uint32_t>(value)); }
  BodyWriter& f32(float value) { return u32(std::bit_cast<std::uint32_t>(value)); }
  BodyWriter& f64(double value) { return number(std::bit_cast<std::uint64_t>(value), 8); }

  template <std::size_t Count>
  BodyWriter& bytes(const std::array<std::uint8_t, Count>& field) {
    body_.insert(body_.end(), field.begin(), field.end());
    return *this;
  }

  /// Writes `width` bytes: the text, cut or filled up with zero bytes.
  BodyWriter& text(std::string_view text, std::size_t width) {
    text = text.substr(0, width);
    body_.insert(body_.end(), text.begin(), text.end());
    body_.resize(body_.size() + width - text.size());
    return *this;
  }

  const Bytes& body() const { return body_; }

 private:
  BodyWriter& number(std::uint64_t value, int width) {
    while (width-- > 0) {
      body_.push_back(static_cast<std::uint8_t>(value >> (8 * width) & 0xFF));
    }
    return *this;
  }

  Bytes body_;
};

}  // namespace orb::sim
