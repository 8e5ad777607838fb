#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>

#include "device/shared_device.h"
#include "orb-sim/pty_line.h"
#include "orb-sim/scenario.h"
#include "orb-sim/tcp_line.h"
#include "program/command_line.h"
#include "program/failure.h"
#include "program/offered_line.h"
#include "program/pulse_file.h"
#include "program/scenario_options.h"
#include "program/signals.h"

namespace orb::sim {
namespace {

constexpr char kServeDescription[] =
    "Offers the receiver alone, to programs that are started elsewhere\n\n"
    "Clients come and go; the link stays until SIGINT, SIGTERM or SIGHUP ends it, with status 0.";

struct ServeOptions {
  ScenarioOptions scenario;
  std::filesystem::path link;
  std::filesystem::path pulses;
  std::optional<std::uint16_t> tcpPort;
};

int serve(const ServeOptions& options) {
  if (options.link.empty() && !options.tcpPort) {
    throw Failure("give --link PATH or --tcp PORT, or both");
  }
  const Scenario scenario = options.scenario.scenario();
  if (scenario.presence == Scenario::Presence::Absent) {
    throw Failure("the scenario has no receiver that could be served");
  }
  if (!options.link.empty()) {
    requireFreeLink(options.link);
  }
  const EndSignals end;
  std::optional<PulseFile> pulses;
  ScenarioDevice receiver(scenario);
  if (!options.pulses.empty()) {
    pulses.emplace(options.pulses);
    receiver.listenToPulses([&](const PulseEvent& event) { pulses->append(event); });
  }
  SharedDevice shared(receiver);
  const bool hasBoth = !options.link.empty() && options.tcpPort;
  std::optional<PtyLine> pty;
  std::optional<TcpLine> tcp;
  if (!options.link.empty()) {
    pty.emplace(hasBoth ? shared.first() : receiver, options.link);
    announceLine(options.link, pty->path());
  }
  if (options.tcpPort) {
    tcp.emplace(hasBoth ? shared.second() : receiver, *options.tcpPort);
    std::cerr << "orb-sim: the line is at TCP port 127.0.0.1:" << tcp->port() << '\n';
  }
  end.wait();
  return 0;
}

}  // namespace

void addServe(CLI::App& app, Invocation& invocation) {
  CLI::App* const subcommand =
      addSubcommand(app, "serve", "--link PATH [--tcp PORT] [OPTIONS]", kServeDescription);
  const auto options = std::make_shared<ServeOptions>();
  addLinkOption(*subcommand, options->link);
  addOption(
      *subcommand, "--tcp", "PORT",
      "Offers the line on this port of 127.0.0.1 as well, or alone; 0: any free one",
      [options](const std::string& text) { options->tcpPort = wholeNumber<std::uint16_t>(text); });
  addPulsesOption(*subcommand, options->pulses);
  options->scenario.addReceiverOptions(*subcommand);
  invocation.actions[subcommand] = [options] { return serve(*options); };
}

}  // namespace orb::sim
