#include <algorithm>
#include <filesystem>
#include <iostream>
#include <set>

#include "orb-sim/scenario.h"
#include "program/command_line.h"
#include "program/installation.h"
#include "program/standard_streams.h"

namespace orb::sim {
namespace {

constexpr char kScenariosDescription[] =
    "Lists the ready scenarios, with a sentence each\n\n"
    "Each name can be given to --scenario. docs/scenarios.md tells how to write others.";

int listScenarios() {
  constexpr std::size_t kWidth = 16;
  const std::filesystem::directory_iterator entries(scenarioFolder());
  const std::set<std::filesystem::path> files(begin(entries), end(entries));
  for (const std::filesystem::path& file : files) {
    std::string name = file.stem();
    name.resize(std::max(kWidth, name.size() + 1), ' ');
    std::cout << name << loadScenario(file).description << '\n';
  }
  requireOutput();
  return 0;
}

}  // namespace

void addScenarios(CLI::App& app, Invocation& invocation) {
  addSubcommand(app, "scenarios", "", kScenariosDescription)->callback([&] {
    invocation.action = listScenarios;
  });
}

}  // namespace orb::sim
