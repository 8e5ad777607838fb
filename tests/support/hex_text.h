#pragma once

#include <cstdio>
#include <sstream>
#include <string>

#include "orb-sim/bytes.h"

namespace orb::test {

/// The bytes that a text such as "A0 A1 00 02" spells.
inline sim::Bytes bytes(const std::string& hexText) {
  std::istringstream words(hexText);
  sim::Bytes result;
  for (unsigned int value = 0; words >> std::hex >> value;) {
    result.push_back(static_cast<std::uint8_t>(value));
  }
  return result;
}

/// Bytes as a text such as "A0 A1 00 02".
inline std::string hexText(const sim::Bytes& bytes) {
  std::string result;
  for (const std::uint8_t byte : bytes) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02X", unsigned{byte});
    result += result.empty() ? "" : " ";
    result += digits;
  }
  return result;
}

}  // namespace orb::test
