#include <filesystem>
#include <iomanip>
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
    "Each name can be given to --scenario.";

int listScenarios() {
  constexpr int kWidth = 15;
  const std::filesystem::directory_iterator entries(scenarioFolder());
  const std::set<std::filesystem::path> files(begin(entries), end(entries));
  for (const std::filesystem::path& file : files) {
    std::cout << std::left << std::setw(kWidth) << file.stem().string() << ' '
              << loadScenario(file).description << '\n';
  }
  requireOutput();
  return 0;
}

}  // namespace

void addScenarios(CLI::App& app, Invocation& invocation) {
  CLI::App* const subcommand = addSubcommand(app, "scenarios", "", kScenariosDescription);
  subcommand->footer("How to write others:\n" + documentation("scenarios.md").string());
  invocation.actions[subcommand] = listScenarios;
}

}  // namespace orb::sim
