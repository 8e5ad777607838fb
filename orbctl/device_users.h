#pragma once

#include <string>
#include <vector>

namespace orb::ctl {

/// Other processes that have the device open, as far as this user may see: "1234 (cat)". One that
/// has the far end of a pseudo-terminal is the line, not its user.
std::vector<std::string> usersOfDevice();

}  // namespace orb::ctl
