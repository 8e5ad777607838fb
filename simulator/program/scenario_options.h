#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "orb-sim/scenario.h"

namespace orb::sim {

/// The options that say what the device is like: a scenario, and what differs from it.
class ScenarioOptions {
 public:
  /// Adds the options of the receiver. This must outlive the parsing.
  void addReceiverOptions(CLI::App& subcommand);

  /// Adds those of what is around it.
  void addDeviceOptions(CLI::App& subcommand);

  /// What the user has asked for. Throws Failure where there is no such scenario, and as
  /// loadScenario() does.
  Scenario scenario() const;

 private:
  using Edit = std::function<void(Scenario&)>;

  /// Throws CLI::ValidationError for a value that does not do.
  using SetValue = void (*)(Scenario& scenario, const std::string& value);

  CLI::Option* addValue(CLI::App& subcommand, const std::string& name, const std::string& type,
                        const std::string& description, SetValue set);
  CLI::Option* addFlag(CLI::App& subcommand, const std::string& name,
                       const std::string& description, const Edit& edit);

  std::filesystem::path name_;
  CLI::Option* silent_ = nullptr;
  std::vector<Edit> edits_;
};

/// Adds --pps: where the events at the timing outputs are noted.
CLI::Option* addPulsesOption(CLI::App& subcommand, std::filesystem::path& file);

}  // namespace orb::sim
