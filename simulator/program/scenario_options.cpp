#include "program/scenario_options.h"

#include <array>
#include <chrono>
#include <cstdio>

#include "program/command_line.h"
#include "program/failure.h"
#include "program/installation.h"

namespace orb::sim {
namespace {

using Edit = std::function<void(Scenario&)>;
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

Edit kernelVersion(const std::string& text) {
  return [kernel = version(text)](Scenario& scenario) { scenario.state.identity.kernel = kernel; };
}

Edit odmVersion(const std::string& text) {
  return [odm = version(text)](Scenario& scenario) { scenario.state.identity.odm = odm; };
}

Edit revision(const std::string& text) {
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
  return
      [year = static_cast<std::uint8_t>(year - kCentury), month = static_cast<std::uint8_t>(month),
       day = static_cast<std::uint8_t>(day)](Scenario& scenario) {
        scenario.state.identity.revisionYear = year;
        scenario.state.identity.revisionMonth = month;
        scenario.state.identity.revisionDay = day;
      };
}

Edit seed(const std::string& text) {
  return
      [number = wholeNumber<std::uint64_t>(text)](Scenario& scenario) { scenario.seed = number; };
}

Edit hardwareId(const std::string& text) {
  return [text](Scenario& scenario) { scenario.hardwareId = text; };
}

/// The file of a scenario: `name` itself where it has a slash or ends in ".toml", otherwise that of
/// the ready scenario of this name.
std::filesystem::path scenarioFile(const std::string& name) {
  const std::filesystem::path given = name;
  if (given.has_parent_path() || given.extension() == ".toml") {
    return given;
  }
  const std::filesystem::path file = scenarioFolder() / (name + ".toml");
  if (!std::filesystem::exists(file)) {
    throw Failure("there is no scenario " + name + "; orb-sim scenarios lists them");
  }
  return file;
}

}  // namespace

CLI::Option* ScenarioOptions::addEdit(CLI::App& subcommand, const std::string& name,
                                      const std::string& type, const std::string& description,
                                      Edit (*read)(const std::string& value)) {
  return addOption(subcommand, name, type, description,
                   [this, read](const std::string& value) { edits_.push_back(read(value)); });
}

CLI::Option* ScenarioOptions::addFlag(CLI::App& subcommand, const std::string& name,
                                      const std::string& description, const Edit& edit) {
  return subcommand.add_flag_callback(
      name, [this, edit] { edits_.push_back(edit); }, description);
}

void ScenarioOptions::addReceiverOptions(CLI::App& subcommand) {
  refuseEmpty(
      subcommand.add_option("--scenario", name_,
                            "The circumstances: a name that orb-sim scenarios lists, or a file"))
      ->type_name("NAME|FILE");
  addEdit(subcommand, "--seed", "N", "Decides all that the scenario leaves to chance", seed);
  silent_ = addFlag(subcommand, "--silent",
                    "The receiver never sends a byte: a client's first query waits for ever",
                    [](Scenario& scenario) { scenario.presence = Scenario::Presence::Silent; });
  addEdit(subcommand, "--kernel-version", "X.Y.Z", "The receiver's kernel version", kernelVersion);
  addEdit(subcommand, "--odm-version", "X.Y.Z", "The receiver's ODM version", odmVersion);
  addEdit(subcommand, "--revision", "YEAR.MONTH.DAY", "The date of the receiver's firmware",
          revision);
}

void ScenarioOptions::addDeviceOptions(CLI::App& subcommand) {
  addFlag(subcommand, "--no-receiver", "There is no /dev/tty_gps", [](Scenario& scenario) {
    scenario.presence = Scenario::Presence::Absent;
  })->excludes(silent_);
  CLI::Option* const id = addEdit(
      subcommand, "--hardware-id", "TEXT",
      std::string("The fitted module's hardware set identifier, instead of ") + kFittedModule,
      hardwareId);
  addFlag(subcommand, "--no-module", "No module is fitted", [](Scenario& scenario) {
    scenario.hardwareId.reset();
  })->excludes(id);
}

Scenario ScenarioOptions::scenario() const {
  Scenario scenario = name_.empty() ? Scenario{} : loadScenario(scenarioFile(name_));
  for (const Edit& edit : edits_) {
    edit(scenario);
  }
  return scenario;
}

}  // namespace orb::sim
