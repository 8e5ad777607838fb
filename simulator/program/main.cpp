#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "program/failure.h"
#include "program/run.h"
#include "program/run_options.h"

namespace {

using orb::sim::Failure;
using orb::sim::RunOptions;

constexpr char kProgram[] = "orb-sim";
constexpr char kDescription[] =
    "A GNSS timing receiver and the device around it, simulated, for programs that use orb-gnss.";
constexpr char kRunDescription[] =
    "Runs COMMAND so that it sees the simulated receiver as /dev/tty_gps, a hardware inventory on\n"
    "its system bus, and private copies of the log and identity files. Ends with COMMAND's exit\n"
    "status.";

/// The help of `orb-sim run`; the parser knows nothing of COMMAND.
class RunHelp : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App*, std::string) const override {
    return "Usage: orb-sim run [OPTIONS] -- COMMAND [ARG...]\n";
  }
};

using Numbers = std::array<unsigned int, 3>;

Numbers threeNumbers(const std::string& text, const std::string& option) {
  Numbers numbers{};
  int length = 0;
  const int count =
      std::sscanf(text.c_str(), "%u.%u.%u%n", numbers.data(), &numbers[1], &numbers[2], &length);
  if (count != 3 || text.begin() + length != text.end()) {
    throw CLI::ValidationError(option, text + " is not three numbers with dots between");
  }
  return numbers;
}

std::uint8_t byte(unsigned int number, const std::string& option) {
  constexpr unsigned int kMax = 255;
  if (number > kMax) throw CLI::ValidationError(option, "a number is above 255");
  return static_cast<std::uint8_t>(number);
}

orb::sim::Version version(const std::string& text, const std::string& option) {
  const Numbers numbers = threeNumbers(text, option);
  return {byte(numbers[0], option), byte(numbers[1], option), byte(numbers[2], option)};
}

void setRevision(orb::sim::Identity& identity, const std::string& text) {
  constexpr unsigned int kCentury = 2000;
  constexpr char kOption[] = "--revision";
  const Numbers numbers = threeNumbers(text, kOption);
  if (numbers[0] < kCentury) throw CLI::ValidationError(kOption, "the year is before 2000");
  identity.revisionYear = byte(numbers[0] - kCentury, kOption);
  identity.revisionMonth = byte(numbers[1], kOption);
  identity.revisionDay = byte(numbers[2], kOption);
}

void addDeviceOptions(CLI::App& run, RunOptions& options) {
  CLI::Option* const id =
      run.add_option_function<std::string>(
             "--hardware-id", [&](const std::string& text) { options.hardwareId = text; },
             "The fitted module's hardware set identifier")
          ->type_name("TEXT")
          ->default_str(orb::sim::kFittedModule);
  run.add_flag_callback(
         "--no-module", [&] { options.hardwareId.reset(); }, "No module is fitted")
      ->excludes(id);
  CLI::Option* const absent = run.add_flag_callback(
      "--no-receiver", [&] { options.receiver = RunOptions::Receiver::kAbsent; },
      "There is no /dev/tty_gps");
  run.add_flag_callback(
         "--silent", [&] { options.receiver = RunOptions::Receiver::kSilent; },
         "The receiver never sends a byte")
      ->excludes(absent);
}

void addIdentityOptions(CLI::App& run, orb::sim::Identity& identity) {
  run.add_option_function<std::string>(
         "--kernel-version",
         [&](const std::string& text) { identity.kernel = version(text, "--kernel-version"); },
         "The receiver's kernel version")
      ->type_name("X.Y.Z");
  run.add_option_function<std::string>(
         "--odm-version",
         [&](const std::string& text) { identity.odm = version(text, "--odm-version"); },
         "The receiver's ODM version")
      ->type_name("X.Y.Z");
  run.add_option_function<std::string>(
         "--revision", [&](const std::string& text) { setRevision(identity, text); },
         "The date of the receiver's firmware")
      ->type_name("YEAR.MONTH.DAY");
}

/// The arguments of orb-sim itself, without the program's name; `command` takes what follows "--".
std::vector<std::string> splitArguments(int argc, char** argv, std::vector<std::string>& command) {
  std::vector<std::string> own(argv + 1, argv + argc);
  const auto separator = std::find(own.begin(), own.end(), "--");
  if (separator != own.end()) {
    command.assign(separator + 1, own.end());
    own.erase(separator, own.end());
  }
  return own;
}

int execute(int argc, char** argv) {
  RunOptions options;
  CLI::App app(kDescription, kProgram);
  app.set_version_flag("--version", std::string(kProgram) + " " ORB_VERSION);
  app.require_subcommand(1);
  CLI::App* const run = app.add_subcommand("run", kRunDescription);
  run->formatter(std::make_shared<RunHelp>());
  run->add_option("--keep", options.keep, "Leaves the log and identity files in this folder")
      ->type_name("DIR");
  addDeviceOptions(*run, options);
  addIdentityOptions(*run, options.identity);

  std::vector<std::string> arguments = splitArguments(argc, argv, options.command);
  std::reverse(arguments.begin(), arguments.end());  // as CLI11 takes them
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : orb::sim::kExitOwnFailure;
  }
  if (options.command.empty()) {
    throw Failure("COMMAND is missing; write it behind --, as in: orb-sim run -- ./client");
  }
  return orb::sim::run(options);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return execute(argc, argv);
  } catch (const Failure& failure) {
    std::cerr << kProgram << ": " << failure.what() << '\n';
    return failure.status();
  } catch (const std::exception& error) {
    std::cerr << kProgram << ": " << error.what() << '\n';
    return orb::sim::kExitOwnFailure;
  }
}
