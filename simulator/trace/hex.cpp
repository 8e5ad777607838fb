#include "trace/hex.h"

#include <charconv>

namespace orb::sim {

std::string toHex(const Bytes& bytes, std::string_view separator) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    if (!text.empty()) {
      text += separator;
    }
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

std::optional<Bytes> fromHex(std::string_view digits) {
  constexpr int kBase = 16;
  if (digits.size() % 2 != 0) {
    return std::nullopt;
  }
  Bytes bytes(digits.size() / 2);
  const char* digit = digits.data();
  for (std::uint8_t& byte : bytes) {
    const char* const end = digit + 2;
    if (std::from_chars(digit, end, byte, kBase).ptr != end) {
      return std::nullopt;
    }
    digit = end;
  }
  return bytes;
}

}  // namespace orb::sim
