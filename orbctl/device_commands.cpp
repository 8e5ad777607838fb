#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "orbctl/argument.h"
#include "orbctl/command.h"
#include "orbctl/failure.h"
#include "orbctl/interruption.h"

namespace orb::ctl {
namespace {

constexpr char kIdentityFile[] = "/tmp/orbitekChip-info.txt";

void done(const Options& options, const std::string& command, const std::string& text) {
  show(options, command, {{"done", true}}, text + "\n");
}

/// Calls an operation whose interruption leaves open what the receiver has done.
void order(Session& session, const char* operation, const Values& arguments,
           const std::string& open) {
  session.requireReceiver();
  const Interruption interruption(fmt::format("orbctl: interrupted; {}\n", open));
  session.call(operation, arguments);
}

void antennaPower(Session& session, const Options& options, const std::string& state) {
  session.call("setAntennaPower", {state});
  show(options, "antenna-power", {{"requested", state}},
       fmt::format("The antenna's supply was switched {}. A board that does not answer cannot be "
                   "told from one that does.\n",
                   state));
}

void defaults(Session& session, const Options& options, const std::string& which) {
  const char* const operation = which == "factory"       ? "resetFactoryDefaults"
                                : which == "application" ? "setApplicationDefaults"
                                                         : "setDefaultConfiguration";
  order(session, operation, {},
        fmt::format("the {} defaults may be set in part; see: orbctl keys --values", which));
  done(options, "defaults", fmt::format("The {} defaults are set.", which));
}

void reset(Session& session, const Options& options, const std::string& kind) {
  const long long mode = kind == "hot" ? 1 : kind == "warm" ? 2 : 3;
  order(session, "forceRestart", {mode}, "the start may have been requested or not");
  done(options, "reset",
       kind == "warm" ? "An empty restart request was sent: the kind of restart is the receiver's."
                      : fmt::format("A {} start was requested.", kind));
}

void identity(Session& session, const Options& options) {
  session.requireReceiver();
  Values none;
  session.callAnyway("saveorbitekChipInfo", none);
  std::error_code error;
  std::ostringstream text;
  // Nobody may ever write to a FIFO.
  if (!std::filesystem::is_regular_file(kIdentityFile, error) ||
      !(text << std::ifstream(kIdentityFile).rdbuf())) {
    throw Failure(ExitStatus::Refused, fmt::format("cannot read {}", kIdentityFile),
                  "what stands there already is not replaced: remove it and try again");
  }
  show(options, "identity", {{"file", kIdentityFile}, {"text", text.str()}}, text.str());
}

void addUart(CLI::App& app, Action& chosen) {
  const auto port = std::make_shared<int>(0);
  const auto baud = std::make_shared<int>(0);
  CLI::App* const command =
      addCommand(app, "uart", "Sets up a serial port of the receiver", chosen,
                 [=](Session& session, const Options& options) {
                   session.call("gpsObtSetUartPort",
                                {static_cast<long long>(*port), static_cast<long long>(*baud)});
                   done(options, "uart",
                        fmt::format("Port {} is set to {} bit/s. The tty keeps its own "
                                    "speed: set it too, with stty.",
                                    *port, *baud));
                 });
  const Argument& portArgument = argumentOf("gpsObtSetUartPort", "port");
  command->add_option("PORT", *port, "The receiver's port, " + rangeOf(portArgument))
      ->required()
      ->check(CLI::Range(portArgument.lowest, portArgument.highest));
  command->add_option("BAUD", *baud, "4800, 9600, 19200, 38400, 57600 or 115200 bit/s")
      ->required()
      ->check(CLI::IsMember({4800, 9600, 19200, 38400, 57600, 115200}));
}

}  // namespace

void addDeviceCommands(CLI::App& app, Action& chosen) {
  const auto word = std::make_shared<std::string>();

  CLI::App* command = addCommand(
      app, "antenna-power", "Switches the antenna's supply", chosen,
      [=](Session& session, const Options& options) { antennaPower(session, options, *word); });
  command->add_option("STATE", *word, "on or off")->required()->check(CLI::IsMember({"on", "off"}));

  command = addCommand(
      app, "defaults", "Sets a whole configuration: what was set is lost (orbctl backup FILE)",
      chosen, [=](Session& session, const Options& options) { defaults(session, options, *word); });
  command->add_option("WHICH", *word, "application, configuration (a timing receiver's) or factory")
      ->required()
      ->check(CLI::IsMember({"application", "configuration", "factory"}));

  addCommand(app, "restart", "Restarts the receiver", chosen,
             [](Session& session, const Options& options) {
               order(session, "restart", {true}, "the restart may have been requested or not");
               done(options, "restart", "A restart was requested.");
             });

  command =
      addCommand(app, "reset", "Requests a hot, warm or cold start", chosen,
                 [=](Session& session, const Options& options) { reset(session, options, *word); });
  command->add_option("KIND", *word, "hot, warm or cold")
      ->required()
      ->check(CLI::IsMember({"hot", "warm", "cold"}));

  addUart(app, chosen);
  addCommand(app, "identity", "Writes the identity file where there is none, and shows it", chosen,
             identity);
}

}  // namespace orb::ctl
