#include <memory>

#include "program/command_line.h"
#include "program/failure.h"
#include "program/run.h"
#include "program/scenario_options.h"

namespace orb::sim {
namespace {

constexpr char kRunDescription[] =
    "Runs a program on the simulated device\n\n"
    "COMMAND sees the simulated receiver as /dev/tty_gps, a hardware inventory on its system bus,\n"
    "and private copies of the log and identity files. Ends with COMMAND's exit status.";

struct RunCommandOptions {
  RunOptions run;
  ScenarioOptions scenario;
};

}  // namespace

void addRun(CLI::App& app, Invocation& invocation) {
  CLI::App* const run = addSubcommand(app, "run", "[OPTIONS] -- COMMAND [ARG...]", kRunDescription);
  const auto options = std::make_shared<RunCommandOptions>();
  options->scenario.addReceiverOptions(*run);
  options->scenario.addDeviceOptions(*run);
  addPath(*run, "--tty", "PATH", options->run.tty,
          "COMMAND finds this line, as of orb-sim serve or tap, at /dev/tty_gps, and no\n"
          "simulated receiver")
      ->excludes("--silent")
      ->excludes("--no-receiver");
  addPulsesOption(*run, options->run.pulses)->excludes("--tty");
  addPath(*run, "--keep", "DIR", options->run.keep,
          "Leaves the log and identity files in this folder, and makes it if need be; the\n"
          "next run continues them. i2c-registers.txt is left there too, anew in each run");
  invocation.commandTakers.insert(run);
  invocation.actions[run] = [options, &invocation] {
    if (invocation.command.empty()) {
      throw Failure("COMMAND is missing; write it after --, as in: orb-sim run -- ./client");
    }
    options->run.scenario = options->scenario.scenario();
    options->run.command = invocation.command;
    return sim::run(options->run);
  };
}

}  // namespace orb::sim
