#pragma once

#include <cstddef>
#include <string_view>

#include "i2c/port_expander.h"

namespace orb::sim {

/// The port expander as a short text, for people and scripts to read and to keep its state in:
///
///     port expander at 0x21   port 0   port 1
///     0 1  input                  ff       ff
///     2 3  output                 ff       ff
///     4 5  polarity               00       00
///     6 7  direction              ff       ff
///     next register                         0
///     antenna supply               not driven
class RegisterText {
 public:
  explicit RegisterText(const PortExpander& expander) noexcept;

  std::string_view view() const noexcept { return {text_, kSize}; }

  /// Sets the registers as a text of this form has them. False, and no change, where it is of
  /// another.
  static bool read(const char* text, PortExpander& expander) noexcept;

  /// The length of every such text.
  static constexpr std::size_t kSize = std::size_t{7} * 40;

 private:
  char text_[kSize + 1];
};

}  // namespace orb::sim
