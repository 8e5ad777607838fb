#pragma once

namespace orb {

/// The tty that the receiver is on.
constexpr const char* kDefaultDevice = "/dev/tty_gps";

}  // namespace orb
