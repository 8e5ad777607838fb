#pragma once

#include <ostream>

namespace orb {

// <iostream> makes every source file that includes it run code when the library is loaded, so one
// file alone includes it and lends its streams to the others.

/// std::cout.
std::ostream& standardOutput();

/// std::cerr.
std::ostream& standardError();

}  // namespace orb
