#include "program/scenario_options.h"

#include <array>
#include <chrono>
#include <cstdio>

#include "program/command_line.h"
#include "program/failure.h"
#include "program/installation.h"

namespace orb::sim {
namespace {

using Numbers = std::array<unsigned int, 3>;

constexpr unsigned int kMaxByte = 255;

CLI::ValidationError wrong(const std::string& problem) { return CLI::ValidationError(problem); }

Numbers threeNumbers(const std::string& text) {
  Numbers numbers{};
  int length = 0;
  const int count =
      std::sscanf(text.c_str(), "%9u.%9u.%9u%n", numbers.data(), &numbers[1], &numbers[2], &length);
  if (count != 3 || text.begin() + length != text.end()) {
    throw wrong(text + " is not three numbers with dots between");
  }
  return numbers;
}

Version version(const std::string& text) {
  const Numbers numbers = threeNumbers(text);
  for (const unsigned int number : numbers) {
    if (number > kMaxByte) {
      throw wrong(std::to_string(number) + " is above 255");
    }
  }
  const auto byte = [&](std::size_t index) { return static_cast<std::uint8_t>(numbers[index]); };
  return {byte(0), byte(1), byte(2)};
}

void setRevision(Identity& identity, const std::string& text) {
  constexpr unsigned int kCentury = 2000;
  const auto [year, month, day] = threeNumbers(text);
  if (year < kCentury || year > kCentury + kMaxByte) {
    throw wrong("the receiver can only tell years from 2000 to 2255");
  }
  const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(year)),
                                         std::chrono::month(month), std::chrono::day(day)};
  if (month > kMaxByte || day > kMaxByte || !date.ok()) {
    throw wrong(text + " is no date");
  }
  identity.revisionYear = static_cast<std::uint8_t>(year - kCentury);
  identity.revisionMonth = static_cast<std::uint8_t>(month);
  identity.revisionDay = static_cast<std::uint8_t>(day);
}

/// The file of a scenario: `name` itself where it has a slash or ends in ".toml", otherwise that of
/// the ready scenario of this name.
std::filesystem::path scenarioFile(const std::filesystem::path& name) {
  if (name.has_parent_path() || name.extension() == ".toml") {
    return name;
  }
  const std::filesystem::path file = scenarioFolder() / (name.string() + ".toml");
  if (!std::filesystem::exists(file)) {
    throw Failure("there is no scenario " + name.string() + "; orb-sim scenarios lists them");
  }
  return file;
}

}  // namespace

CLI::Option* ScenarioOptions::addValue(CLI::App& subcommand, const std::string& name,
                                       const std::string& type, const std::string& description,
                                       SetValue set) {
  return addOption(subcommand, name, type, description, [this, set](const std::string& value) {
    Scenario scratch;
    set(scratch, value);  // so that a wrong value is told while the command line is read
    edits_.emplace_back([set, value](Scenario& scenario) { set(scenario, value); });
  });
}

CLI::Option* ScenarioOptions::addFlag(CLI::App& subcommand, const std::string& name,
                                      const std::string& description, const Edit& edit) {
  return subcommand.add_flag_callback(
      name, [this, edit] { edits_.push_back(edit); }, description);
}

void ScenarioOptions::addReceiverOptions(CLI::App& subcommand) {
  addPath(subcommand, "--scenario", "NAME|FILE", name_,
          "The circumstances: a name that orb-sim scenarios lists, or a file");
  addValue(subcommand, "--seed", "N", "Decides all that the scenario leaves to chance",
           [](Scenario& scenario, const std::string& text) {
             scenario.seed = wholeNumber<std::uint64_t>(text);
           });
  silent_ = addFlag(subcommand, "--silent",
                    "The receiver never sends a byte: a client's first query waits for ever",
                    [](Scenario& scenario) { scenario.presence = Scenario::Presence::Silent; });
  addFlag(subcommand, "--talk",
          "The receiver sends its output from the start, without being spoken to first",
          [](Scenario& scenario) { scenario.talksFromTheStart = true; });
  addValue(subcommand, "--kernel-version", "X.Y.Z", "The receiver's kernel version",
           [](Scenario& scenario, const std::string& text) {
             scenario.state.identity.kernel = version(text);
           });
  addValue(subcommand, "--odm-version", "X.Y.Z", "The receiver's ODM version",
           [](Scenario& scenario, const std::string& text) {
             scenario.state.identity.odm = version(text);
           });
  addValue(subcommand, "--revision", "YEAR.MONTH.DAY", "The date of the receiver's firmware",
           [](Scenario& scenario, const std::string& text) {
             setRevision(scenario.state.identity, text);
           });
}

void ScenarioOptions::addDeviceOptions(CLI::App& subcommand) {
  addFlag(subcommand, "--no-receiver", "There is no /dev/tty_gps", [](Scenario& scenario) {
    scenario.presence = Scenario::Presence::Absent;
  })->excludes(silent_);
  CLI::Option* const id = addValue(
      subcommand, "--hardware-id", "TEXT",
      std::string("The fitted module's hardware set identifier, instead of ") + kFittedModule,
      [](Scenario& scenario, const std::string& text) { scenario.hardwareId = text; });
  addFlag(subcommand, "--no-module", "No module is fitted", [](Scenario& scenario) {
    scenario.hardwareId.reset();
  })->excludes(id);
}

CLI::Option* addPulsesOption(CLI::App& subcommand, std::filesystem::path& file) {
  return addPath(subcommand, "--pps", "FILE", file,
                 "Appends a line to this file or FIFO for each edge of the 1PPS output, and for\n"
                 "each frequency of the second output");
}

Scenario ScenarioOptions::scenario() const {
  Scenario scenario = name_.empty() ? Scenario{} : loadScenario(scenarioFile(name_));
  for (const Edit& edit : edits_) {
    edit(scenario);
  }
  return scenario;
}

}  // namespace orb::sim
