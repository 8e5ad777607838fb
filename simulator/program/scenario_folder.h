#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orb::sim {

/// The file of a scenario: `name` itself where it has a slash or ends in ".toml", otherwise that of
/// the ready scenario of this name. Throws Failure where there is none.
std::filesystem::path scenarioFile(const std::string& name);

/// The files of the ready scenarios, by name; theirs are the stems of the files.
std::vector<std::filesystem::path> readyScenarios();

}  // namespace orb::sim
