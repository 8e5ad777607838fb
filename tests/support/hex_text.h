#pragma once

#include <charconv>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orb::test {

using Bytes = std::vector<std::uint8_t>;

/// The bytes that a text such as "A0 A1 00 02" or "A0A10002" spells. Throws std::invalid_argument
/// for anything but pairs of digits, with blanks and line ends between them.
inline Bytes hex(std::string_view text) {
  Bytes bytes;
  while (!text.empty()) {
    if (text.front() == ' ' || text.front() == '\n') {
      text.remove_prefix(1);
      continue;
    }
    const std::string_view pair = text.substr(0, 2);
    std::uint8_t byte = 0;
    if (std::from_chars(pair.begin(), pair.end(), byte, 16).ptr != pair.begin() + 2) {
      throw std::invalid_argument("no byte in hexadecimal digits: " + std::string(pair));
    }
    bytes.push_back(byte);
    text.remove_prefix(2);
  }
  return bytes;
}

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

/// Bytes as a text such as "A0 A1 00 02", or with another text between them.
inline std::string hexText(const Bytes& bytes, std::string_view separator = " ") {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += text.empty() ? "" : separator;
    text += kDigits[byte / 16];
    text += kDigits[byte % 16];
  }
  return text;
}

}  // namespace orb::test
