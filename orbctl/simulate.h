#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orb::ctl {

/// What --simulate [SCENARIO] asks for.
struct Simulation {
  std::string scenario;  // empty for the default one
};

/// Takes --simulate and its scenario out of `arguments`. A word after it is its scenario unless it
/// is an option or one of `commands`.
std::optional<Simulation> takeSimulation(std::vector<std::string>& arguments,
                                         const std::vector<std::string>& commands);

/// Replaces this process by orb-sim, which runs it anew on the simulated device. Throws Failure.
[[noreturn]] void runSimulated(const Simulation& simulation,
                               const std::vector<std::string>& arguments);

}  // namespace orb::ctl
