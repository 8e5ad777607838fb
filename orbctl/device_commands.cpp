#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "base/owned_descriptor.h"
#include "base/plain_text.h"
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

/// What the identity file holds. Anybody may have put something else there.
std::string identityText() {
  constexpr std::size_t kLongest = 4096;
  const OwnedDescriptor file(
      ::open(kIdentityFile, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status {};
  std::string text(kLongest + 1, '\0');
  const bool isFile = ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
  const ssize_t size = isFile ? ::read(file.get(), text.data(), text.size()) : -1;
  text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  if (text.empty() || text.size() > kLongest) {
    throw Failure(ExitStatus::Refused,
                  text.empty() ? fmt::format("cannot read {}", kIdentityFile)
                               : fmt::format("{} is too long for an identity file", kIdentityFile),
                  "what stands there already is not replaced: remove it and try again");
  }
  return text;
}

void identity(Session& session, const Options& options) {
  session.requireReceiver();
  Values none;
  session.callAnyway("saveorbitekChipInfo", none);
  const std::string text = identityText();
  show(options, "identity", {{"file", kIdentityFile}, {"text", text}}, plain(text, "\n"));
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
