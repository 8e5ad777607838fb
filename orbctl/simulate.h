#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orb::ctl {

/// What --simulate [SCENARIO] asks for.
struct Simulation {
  std::string scenario;  // empty for the default one
};

/// Takes --simulate and its scenario out of `arguments`. A word after it is its scenario where it
/// is the name of a ready one, or ends in .toml.
std::optional<Simulation> takeSimulation(std::vector<std::string>& arguments);

/// Replaces this process by orb-sim, which runs it anew on the simulated device. Throws Failure.
[[noreturn]] void runSimulated(const Simulation& simulation,
                               const std::vector<std::string>& arguments);

}  // namespace orb::ctl
