#pragma once

#include <chrono>

namespace orb {

/// Sleeps for `duration`, also when signals come in between.
void sleepFor(std::chrono::nanoseconds duration);

}  // namespace orb
