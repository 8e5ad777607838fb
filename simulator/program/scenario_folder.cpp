#include "program/scenario_folder.h"

#include <algorithm>

#include "program/failure.h"
#include "program/installation.h"

namespace orb::sim {
namespace {

namespace fs = std::filesystem;

constexpr char kExtension[] = ".toml";

}  // namespace

fs::path scenarioFile(const std::string& name) {
  const fs::path given = name;
  if (given.has_parent_path() || given.extension() == kExtension) return given;
  const fs::path file = scenarioFolder() / (name + kExtension);
  if (!fs::exists(file)) {
    throw Failure("there is no scenario " + name + "; orb-sim scenarios lists them");
  }
  return file;
}

std::vector<fs::path> readyScenarios() {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(scenarioFolder())) {
    if (entry.path().extension() == kExtension) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace orb::sim
