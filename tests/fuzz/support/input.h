#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "support/hex_text.h"

namespace orb::test {

/// What the fuzzer hands over, taken from its front. After the end there are zeros and no bytes.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool isEmpty() const { return size_ == 0; }

  std::uint8_t byte() {
    const Bytes one = bytes(1);
    return one.empty() ? 0 : one.front();
  }

  /// A number of 16 bits, high byte first.
  std::uint16_t word() {
    const unsigned int high = byte();
    return static_cast<std::uint16_t>(high << 8 | byte());
  }

  /// At most `count` bytes.
  Bytes bytes(std::size_t count) {
    const std::size_t taken = std::min(count, size_);
    const Bytes bytes(data_, data_ + taken);
    data_ += taken;
    size_ -= taken;
    return bytes;
  }

  Bytes rest() { return bytes(size_); }

  std::string_view restAsText() {
    const std::string_view text(reinterpret_cast<const char*>(data_), size_);
    size_ = 0;
    return text;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
};

/// What a target does with an input. Each defines it.
void tryInput(Input input);

/// The bytes in pieces. Each control byte gives the length of one piece; the last piece is the
/// rest.
inline std::vector<Bytes> inPieces(const Bytes& bytes, const Bytes& controls) {
  std::vector<Bytes> pieces;
  auto at = bytes.begin();
  for (const std::uint8_t length : controls) {
    const auto end = at + std::min<std::ptrdiff_t>(length, bytes.end() - at);
    pieces.emplace_back(at, end);
    at = end;
  }
  pieces.emplace_back(at, bytes.end());
  return pieces;
}

}  // namespace orb::test
