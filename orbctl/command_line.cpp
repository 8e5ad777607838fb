#include "orbctl/command_line.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <memory>
#include <string_view>
#include <utility>

#include "base/man_page.h"
#include "base/plain_help.h"
#include "orbctl/command.h"
#include "orbctl/complaint.h"
#include "orbctl/completion.h"
#include "orbctl/failure.h"
#include "orbctl/schema.h"
#include "orbctl/simulate.h"
#include "orbctl/words.h"

namespace orb::ctl {
namespace {

constexpr char kDescription[] = "Asks and configures the GNSS receiver of this device.";
constexpr char kFooter[] = R"(Without COMMAND: the status at a glance.

Exit status: 0 success, 1 refused or read back differently, 2 wrong use, 3 no reply or a missed
deadline, 4 not sent or no device, 5 no module or no receiver, 6 held by another process,
7 another error.

Examples:
  orbctl                              all is well?
  orbctl set elevation-limit 15       changes a setting, and reads it back
  orbctl survey auto 7200 --wait      surveys the position for two hours
  orbctl doctor                       why does the receiver not answer?
  orbctl --simulate status            any command, without hardware)";

/// Bytes that are no UTF-8 are replaced.
std::string asText(const Json& data) {
  constexpr int kIndent = 2;
  return data.dump(kIndent, ' ', false, Json::error_handler_t::replace) + '\n';
}

/// The help of the command that `words` name, or of orbctl alone.
std::string helpOf(const CLI::App& app, const std::vector<std::string>& words) {
  const CLI::App* command = &app;
  std::string name = app.get_name();
  for (const std::string& word : words) {
    const auto found = command->get_subcommands(
        [&](const CLI::App* candidate) { return candidate->get_name() == word; });
    if (found.empty()) {
      throw Failure(ExitStatus::WrongUse, fmt::format("there is no command '{}'", word),
                    "see: orbctl --help");
    }
    command = found.front();
    name += " " + word;
  }
  return command->get_formatter()->make_help(command, name, CLI::AppFormatMode::Normal);
}

/// What tells of orbctl itself, made from its command line and its tables.
void addOwnCommands(CLI::App& app, Action& chosen) {
  const auto words = std::make_shared<std::vector<std::string>>();
  CLI::App* command = addCommand(app, "help", "The help of a command", chosen,
                                 [&app, words](Session&, const Options& options) {
                                   const std::string text = helpOf(app, *words);
                                   show(options, "help", {{"text", text}}, text);
                                 });
  command->add_option("COMMAND", *words, "Which; without it, all of them");

  addCommand(app, "version", "The version of orbctl", chosen, [](Session&, const Options& options) {
    show(options, "version", {{"version", ORB_VERSION}}, "orbctl " ORB_VERSION "\n");
  });

  const auto shell = std::make_shared<std::string>();
  command =
      addCommand(app, "completion", "Prints a script that completes command lines", chosen,
                 [&app, shell](Session&, const Options& options) {
                   const std::string script = completion(*shell, app);
                   show(options, "completion", {{"shell", *shell}, {"script", script}}, script);
                 });
  command->add_option("SHELL", *shell, "bash, zsh or fish")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh", "fish"}));

  addCommand(app, "schema", "Prints the JSON schema of what --json prints", chosen,
             [](Session&, const Options& options) {
               const Json schema = jsonSchema();
               show(options, "schema", {{"schema", schema}}, asText(schema));
             });
}

/// The commands as --help shows them.
constexpr struct {
  const char* name;
  void (*add)(CLI::App& app, Action& chosen);
} kGroups[] = {
    {"What the receiver does", addStatusCommands},
    {"What the receiver does", addWatchCommand},
    {"What is wrong", addDoctorCommand},
    {"Settings", addSettingCommands},
    {"Settings", addBackupCommands},
    {"Survey", addSurveyCommand},
    {"Orders", addDeviceCommands},
    {"Any operation, any message", addOperationCommands},
    {"Any operation, any message", addMessageCommands},
    {"Any operation, any message", addLogCommand},
    {"orbctl itself", addOwnCommands},
};

struct GlobalOptions {
  Options options;
  double deadlineSeconds = 0;
};

void addGlobalOptions(CLI::App& app, GlobalOptions& global) {
  app.add_option("--deadline", global.deadlineSeconds,
                 "Gives up an operation after so long; without it, after the\n"
                 "longest time that it takes and 2 s, the first one 5 s more:\n"
                 "module and receiver are looked for before it")
      ->type_name("SECONDS")
      ->check([](const std::string& text) {
        double seconds = 0;
        const bool isGood = CLI::detail::lexical_cast(text, seconds) && seconds >= 0.001 &&
                            seconds <= 1e6;  // what is no number is neither
        return std::string(isGood ? "" : "it is 0.001 .. 1000000 seconds, not " + text);
      });
  app.add_flag("--json", global.options.isJson, "Prints JSON");
  app.add_flag("-q,--quiet", global.options.session.isQuiet,
               "Prints no more than errors, and what get reads");
  app.add_flag("-v,--verbose", global.options.session.showPrints,
               "Shows what the library prints, on standard error");
  app.add_option_function<std::string>(
         "--simulate", [](const std::string& /*scenario*/) {},
         "Runs on the simulated device; orb-sim scenarios lists them")
      ->type_name("[SCENARIO]")
      ->expected(0, 1);
}

/// The words of a command line that are commands.
std::vector<std::string> commandsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* const command : app.get_subcommands({})) {
    names.push_back(command->get_name());
  }
  return names;
}

void requireOutput() {
  if (std::cout) {
    errno = 0;  // else it tells what went wrong
  }
  if (!std::cout.flush()) {
    throw Failure(ExitStatus::Other,
                  fmt::format("cannot write: {}", std::strerror(errno != 0 ? errno : EIO)));
  }
}

/// Before anything is done that nobody would be told of.
void requireOpenOutput() {
  const int flags = ::fcntl(STDOUT_FILENO, F_GETFL);
  if (flags == -1 || (flags & O_ACCMODE) == O_RDONLY) {
    throw Failure(ExitStatus::WrongUse, "standard output cannot be written to; nothing was done",
                  "to drop what is printed: orbctl ... > /dev/null");
  }
}

int report(const Failure& failure, bool isJson) {
  if (isJson) {
    Json data{{"ok", false},
              {"error",
               {{"status", static_cast<int>(failure.status())},
                {"result", failure.resultBits()},
                {"text", failure.what()},
                {"hint", failure.hint()}}}};
    if (!failure.findings().empty()) {
      data.update(Json::parse(failure.findings()));
    }
    std::cout << asText(data) << std::flush;
  }
  complain(fmt::format("orbctl: {}\n", failure.what()));
  if (!failure.hint().empty()) {
    complain(fmt::format("orbctl: {}\n", failure.hint()));
  }
  return static_cast<int>(failure.status());
}

Failure wrongUse(const CLI::App& app, const CLI::ParseError& error,
                 const std::vector<std::string>& arguments) {
  std::string hint = "see: orbctl --help";
  const std::vector<CLI::App*> asked = app.get_subcommands();
  if (!asked.empty()) {
    const std::string name = asked.front()->get_name();
    hint = isGroup(name) && dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr
               ? fmt::format("{} only shows settings; change one with: orbctl set KEY VALUE", name)
               : fmt::format("see: orbctl {} --help", name);
  } else if (!arguments.empty()) {
    const std::vector<std::string> commands = commandsOf(app);
    const std::string near = nearest(arguments.front(), commands);
    hint = near.empty() ? hint : fmt::format("did you mean {}?", near);
  }
  return {ExitStatus::WrongUse, error.what(), hint};
}

/// What commands of the receiver call, as far as the keys of settings do not say it.
constexpr std::pair<std::string_view, std::string_view> kOperationsOf[] = {
    {"status",
     "gpsOrbGetFwVersion, gpsObtGetGpsTime, gpsObtGetTimeMode, exchangeRaw,\n"
     "gpsOrbGetJamDetectConfig, getNavsolution, gpsObtSetMsgType"},
    {"watch",
     "getNavsolution, gpsObtGetGpsTime, gpsObtGetTimeMode, exchangeRaw,\n"
     "gpsOrbGetJamDetectConfig, gpsObtSetMsgType"},
    {"detect", "IsOrbitek, CreateOrbitek"},
    {"info", "gpsOrbGetFwVersion"},
    {"time", "gpsObtGetGpsTime"},
    {"position", "getNavsolution, gpsObtSetMsgType"},
    {"satellites", "getNavsolution, gpsObtSetMsgType"},
    {"interference", "gpsOrbGetJamDetectConfig"},
    {"doctor", "IsOrbitek, CreateOrbitek, gpsOrbGetFwVersion"},
    {"get", "those that orbctl keys names"},
    {"set", "those that orbctl keys names"},
    {"pulse", "those that orbctl keys names"},
    {"constellations", "those that orbctl keys names"},
    {"masks", "those that orbctl keys names"},
    {"backup", "those that orbctl keys names, gpsObtGetTimeMode"},
    {"restore",
     "those that orbctl keys names, gpsObtGetTimeMode,\n"
     "setSurveyDynamic, setSurveyAuto, setSurveyStatic"},
    {"survey", "gpsObtGetTimeMode, exchangeRaw"},
    {"survey status", "gpsObtGetTimeMode, exchangeRaw"},
    {"survey dynamic", "setSurveyDynamic, gpsObtGetTimeMode, exchangeRaw"},
    {"survey auto", "setSurveyAuto, gpsObtGetTimeMode, exchangeRaw"},
    {"survey static", "setSurveyStatic, gpsObtGetTimeMode, exchangeRaw"},
    {"antenna-power", "setAntennaPower"},
    {"defaults", "setApplicationDefaults, setDefaultConfiguration, resetFactoryDefaults"},
    {"restart", "restart"},
    {"reset", "forceRestart"},
    {"uart", "gpsObtSetUartPort"},
    {"identity", "saveorbitekChipInfo"},
    {"raw", "exchangeRaw"},
};

/// Adds to the description of each command of `app` what it calls.
void nameOperations(CLI::App& app, const std::string& before) {
  for (CLI::App* const command : app.get_subcommands({})) {
    const std::string name = before + command->get_name();
    const auto* const row =
        std::find_if(std::begin(kOperationsOf), std::end(kOperationsOf),
                     [&](const auto& candidate) { return candidate.first == name; });
    if (row != std::end(kOperationsOf)) {
      command->description(
          fmt::format("{}\n\nOperations: {}", command->get_description(), row->second));
    }
    nameOperations(*command, name + " ");
  }
}

void addAllCommands(CLI::App& app, Action& chosen) {
  for (const auto& [group, add] : kGroups) {
    const std::size_t before = app.get_subcommands({}).size();
    add(app, chosen);
    const std::vector<CLI::App*> commands = app.get_subcommands({});
    for (std::size_t i = before; i < commands.size(); ++i) {
      commands[i]->group(group);
    }
  }
  nameOperations(app, "");
}

/// Throws Failure.
void executeParsed(CLI::App& app, const Action& chosen, GlobalOptions& global,
                   std::vector<std::string> arguments) {
  try {
    const std::vector<std::string> commands = commandsOf(app);
    if (const auto simulation = takeSimulation(arguments, commands)) {
      runSimulated(*simulation, arguments);
    }
    // Before the command it means nothing, and the parser would take the command for a value.
    const auto isCommand = [&](const std::string& word) {
      return std::find(commands.begin(), commands.end(), word) != commands.end();
    };
    const auto dashes = std::find(arguments.begin(), arguments.end(), "--");
    if (dashes != arguments.end() && std::none_of(arguments.begin(), dashes, isCommand)) {
      arguments.erase(dashes);
    }
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());  // as CLI11 takes them
    app.parse(reversed);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) {
      throw wrongUse(app, error, arguments);
    }
    app.exit(error);  // --help, --version
    requireOutput();
    return;
  }
  Options& options = global.options;
  options.session.deadline = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::duration<double>(global.deadlineSeconds));
  requireOpenOutput();
  Session session(options.session);
  (chosen ? chosen : showStatus)(session, options);
  requireOutput();
}

}  // namespace

CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& description,
                     Action& chosen, Action action) {
  CLI::App* const command = app.add_subcommand(name, description);
  command->fallthrough();
  command->group("Commands");
  command->footer("The options of all commands: orbctl --help");
  // The innermost command is parsed first.
  command->callback([&chosen, action = std::move(action)] {
    if (!chosen) {
      chosen = action;
    }
  });
  return command;
}

void show(const Options& options, const std::string& command, const Json& data,
          const std::string& text) {
  if (options.isJson) {
    Json whole{{"ok", true}, {"command", command}};
    whole.update(data);
    std::cout << asText(whole);
  } else if (!options.session.isQuiet || command == "get") {
    std::cout << text;
  }
  requireOutput();
}

int execute(int argc, char** argv) {
  CLI::App app(kDescription, "orbctl");
  constexpr int kCommandWidth = 14;
  app.formatter(std::make_shared<PlainHelp>(kCommandWidth));
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
  app.set_help_flag("-h,--help", "Prints this help");
  app.set_version_flag("--version", "orbctl " ORB_VERSION, "Prints the version");
  app.footer(kFooter);
  app.require_subcommand(0, 1);
  GlobalOptions global;
  addGlobalOptions(app, global);
  Action chosen;
  addAllCommands(app, chosen);
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  // Also where the command line could not be read to its end.
  const bool isJson = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
  try {
    if (printManPage(app, 1, argc, argv)) {
      requireOutput();
    } else {
      executeParsed(app, chosen, global, arguments);
    }
    return 0;
  } catch (const Failure& failure) {
    return report(failure, isJson);
  } catch (const std::exception& error) {
    return report(
        Failure(ExitStatus::Other, error.what(),
                "this is a fault of orbctl, or of its surroundings, such as too little memory"),
        isJson);
  }
}

}  // namespace orb::ctl
