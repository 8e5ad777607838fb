#include "program/command_line.h"

#include <algorithm>
#include <iostream>
#include <memory>

#include "program/failure.h"

namespace orb::sim {
namespace {

constexpr char kProgram[] = "orb-sim";
constexpr char kDescription[] =
    "A GNSS timing receiver and the device around it, simulated, for programs that use orb-gnss.";
constexpr char kExamples[] = R"(Examples:
  orb-sim run -- ./client                        ./client finds a healthy device
  orb-sim run --scenario flaky-cable -- ./client ... and one whose line loses and spoils packets
  orb-sim serve --link /tmp/gps                  a receiver for programs that are started elsewhere
  orb-sim tap /dev/ttyS1 --link /tmp/gps --trace gps.trace
                                                 watches and records a real receiver

`orb-sim SUBCOMMAND --help` tells the options. Everything is explained in docs/simulator.md.)";

/// Help without what the parser knows and a reader does not ask for.
class PlainHelp : public CLI::Formatter {
 public:
  explicit PlainHelp(std::string usage) : usage_(std::move(usage)) {
    label("Positionals", "Arguments");
  }

  std::string make_usage(const CLI::App*, std::string) const override {
    return "\nUsage: orb-sim " + usage_ + "\n";
  }

  std::string make_option_opts(const CLI::Option* option) const override {
    const bool isNamed = option->nonpositional() && option->get_type_size() != 0;
    return isNamed ? " " + option->get_type_name() : "";
  }

  std::string make_subcommand(const CLI::App* subcommand) const override {
    const std::string description = subcommand->get_description();
    return "  " + padded(subcommand->get_name()) + description.substr(0, description.find('\n')) +
           "\n";
  }

 private:
  static std::string padded(std::string name) {
    constexpr std::size_t kWidth = 11;
    name.resize(std::max(kWidth, name.size() + 1), ' ');
    return name;
  }

  std::string usage_;
};

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

std::string failureMessage(const CLI::App* app, const CLI::Error& error) {
  std::string asked;
  for (const CLI::App* const subcommand : app->get_subcommands()) asked = subcommand->get_name();
  return std::string(kProgram) + ": " + error.what() + "\n" + kProgram + ": see " + kProgram +
         (asked.empty() ? "" : " " + asked) + " --help\n";
}

void addSubcommands(CLI::App& app, Invocation& invocation) {
  addRun(app, invocation);
  addScenarios(app, invocation);
  addServe(app, invocation);
  addTap(app, invocation);
  addReplay(app, invocation);
  addDecode(app, invocation);
}

}  // namespace

CLI::App* addSubcommand(CLI::App& app, const std::string& name, const std::string& usage,
                        const std::string& description) {
  CLI::App* const subcommand = app.add_subcommand(name, description);
  subcommand->footer("");  // or it would be that of orb-sim itself
  subcommand->formatter(std::make_shared<PlainHelp>(name + " " + usage));
  return subcommand;
}

CLI::Option* addOption(CLI::App& subcommand, const std::string& name, const std::string& type,
                       const std::string& description,
                       const std::function<void(const std::string& value)>& take) {
  const auto named = [name, take](const std::string& value) {
    try {
      take(value);
    } catch (const CLI::ValidationError& error) {
      throw CLI::ValidationError(name, error.what());
    }
  };
  return subcommand.add_option_function<std::string>(name, named, description)->type_name(type);
}

int execute(int argc, char** argv) {
  Invocation invocation;
  CLI::App app(kDescription, kProgram);
  app.formatter(std::make_shared<PlainHelp>("SUBCOMMAND [OPTIONS] [-- COMMAND [ARG...]]"));
  app.set_version_flag("--version", std::string(kProgram) + " " ORB_VERSION);
  app.failure_message(failureMessage);
  app.footer(kExamples);
  addSubcommands(app, invocation);

  std::vector<std::string> arguments = splitArguments(argc, argv, invocation.command);
  std::reverse(arguments.begin(), arguments.end());  // as CLI11 takes them
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kExitOwnFailure;
  }
  if (!invocation.action) {
    std::cerr << kProgram << ": a subcommand is missing\n\n" << app.help();
    return kExitOwnFailure;
  }
  if (!invocation.command.empty() && !invocation.takesCommand) {
    throw Failure(app.get_subcommands().front()->get_name() + " takes no COMMAND");
  }
  return invocation.action();
}

}  // namespace orb::sim
