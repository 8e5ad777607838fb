#pragma once

#include <cstdio>
#include <string>

namespace orb::ctl {

/// Writes to standard error; what cannot be written there is lost, and ends nothing.
inline void complain(const std::string& text) { std::fputs(text.c_str(), stderr); }

}  // namespace orb::ctl
