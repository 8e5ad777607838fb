#include "program/command_line.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <regex>
#include <sstream>

#include "base/man_page.h"
#include "base/plain_help.h"
#include "base/shell_word.h"
#include "program/failure.h"
#include "program/installation.h"
#include "program/standard_streams.h"

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

`orb-sim SUBCOMMAND --help` tells the options. Everything is explained in
)";

/// Help that tells how orb-sim is called.
class Help : public PlainHelp {
 public:
  explicit Help(std::string usage) : PlainHelp(kCommandWidth), usage_(std::move(usage)) {}

  std::string make_usage(const CLI::App*, std::string) const override {
    return "\nUsage: orb-sim " + usage_ + "\n";
  }

 private:
  static constexpr int kCommandWidth = 10;

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

/// What the parser says of an option's values, in plain words.
std::string plainWords(const std::string& message) {
  static const std::regex kTooMany("(.*): At Most 1 required but received .*");
  static const std::regex kMissing("(.*): 1 required (.*) missing");
  const std::string plain = std::regex_replace(message, kTooMany, "$1 is given more than once");
  return std::regex_replace(plain, kMissing, "$1 needs a value: $2");
}

/// The subcommand that is asked for; null where there is none.
const CLI::App* askedFor(const CLI::App& app) {
  const std::vector<CLI::App*> asked = app.get_subcommands();
  return asked.empty() ? nullptr : asked.front();
}

/// Says which words nothing takes, in the order of the command line.
std::string unexpected(const CLI::App& app, const Invocation& invocation) {
  const std::vector<std::string> words = app.remaining(true);
  std::string message = words.size() > 1 ? "The following arguments were not expected:"
                                         : "The following argument was not expected:";
  for (const std::string& word : words) {
    message += " " + word;
  }
  const CLI::App* const asked = askedFor(app);
  const bool mayBeCommand = invocation.command.empty() && words.front().front() != '-';
  if (mayBeCommand && invocation.commandTakers.contains(asked)) {
    message += std::string("\n") + kProgram + ": write COMMAND after --, as in: " + kProgram + " " +
               asked->get_name() + " [...] -- " + shellWord(words.front());
  }
  return message;
}

std::string failureMessage(const CLI::App& app, const Invocation& invocation,
                           const CLI::Error& error) {
  const bool isUnexpected = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
  const CLI::App* const asked = askedFor(app);
  return std::string(kProgram) + ": " +
         (isUnexpected ? unexpected(app, invocation) : plainWords(error.what())) + "\n" + kProgram +
         ": see " + kProgram + (asked == nullptr ? "" : " " + asked->get_name()) + " --help\n";
}

}  // namespace

CLI::App* addSubcommand(CLI::App& app, const std::string& name, const std::string& usage,
                        const std::string& description) {
  CLI::App* const subcommand = app.add_subcommand(name, description);
  subcommand->footer("");  // or it would be that of orb-sim itself
  subcommand->formatter(std::make_shared<Help>(name + " " + usage));
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

CLI::Option* addPath(CLI::App& subcommand, const std::string& name, const std::string& type,
                     std::filesystem::path& path, const std::string& description) {
  const auto isEmpty = [](const std::string& value) {
    return std::string(value.empty() ? "its value is empty" : "");
  };
  return subcommand.add_option(name, path, description)->type_name(type)->check(isEmpty);
}

int execute(int argc, char** argv) {
  Invocation invocation;
  CLI::App app(kDescription, kProgram);
  app.formatter(std::make_shared<Help>("SUBCOMMAND [OPTIONS] [-- COMMAND [ARG...]]"));
  app.set_version_flag("--version", std::string(kProgram) + " " ORB_VERSION);
  app.failure_message([&invocation](const CLI::App* failed, const CLI::Error& error) {
    return failureMessage(*failed, invocation, error);
  });
  app.footer(std::string(kExamples) + ORB_SIM_DOCUMENTATION_FOLDER "/simulator.md");
  for (const auto add : {addRun, addScenarios, addServe, addTap, addReplay, addDecode}) {
    add(app, invocation);
  }
  if (printManPage(app, 1, argc, argv)) {
    requireOutput();
    return 0;
  }

  app.footer(kExamples + documentation("simulator.md").string());
  std::vector<std::string> arguments = splitArguments(argc, argv, invocation.command);
  std::reverse(arguments.begin(), arguments.end());  // as CLI11 takes them
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    std::ostringstream help;  // so that it is flushed where a loss is told
    if (app.exit(error, help, std::cerr) != 0) {
      return kExitOwnFailure;
    }
    std::cout << help.str();
    requireOutput();
    return 0;
  }
  const CLI::App* const asked = askedFor(app);
  if (asked == nullptr) {
    std::cerr << kProgram << ": a subcommand is missing\n\n" << app.help();
    return kExitOwnFailure;
  }
  if (!invocation.command.empty() && !invocation.commandTakers.contains(asked)) {
    throw Failure(asked->get_name() + " takes no COMMAND");
  }
  return invocation.actions.at(asked)();
}

}  // namespace orb::sim
