#pragma once

#include <filesystem>
#include <string>

namespace orb::sim {

/// The file of the program that a user has named as a shell takes it. Throws Failure where there is
/// none, where it cannot be executed, and where it could not be held on the simulated device.
std::filesystem::path commandFile(const std::string& name);

}  // namespace orb::sim
