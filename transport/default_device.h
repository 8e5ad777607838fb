#pragma once

#include <string_view>

namespace orb {

/// The tty that the receiver is on.
constexpr std::string_view kDefaultDevice = "/dev/tty_gps";

}  // namespace orb
