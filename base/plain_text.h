#pragma once

#include <string>
#include <string_view>

namespace orb {

/// What others say, for a terminal: all but printable ASCII and `kept` is escaped, as \xNN.
inline std::string plain(std::string_view text, std::string_view kept = {}) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string result;
  for (const char c : text) {
    if ((c >= ' ' && c <= '~') || kept.find(c) != std::string_view::npos) {
      result += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      result += {'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]};
    }
  }
  return result;
}

}  // namespace orb
