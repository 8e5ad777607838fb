#include "base/console.h"

#include <iostream>

namespace orb {

std::ostream& standardOutput() { return std::cout; }
std::ostream& standardError() { return std::cerr; }

}  // namespace orb
