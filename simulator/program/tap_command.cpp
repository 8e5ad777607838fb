#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

#include "program/command_line.h"
#include "program/failure.h"
#include "program/offered_line.h"
#include "program/serial_port.h"
#include "program/signals.h"
#include "program/tap.h"

namespace orb::sim {
namespace {

namespace fs = std::filesystem;

constexpr char kTapDescription[] =
    "Watches what a program and a receiver say to each other, and records it\n\n"
    "Stands between the receiver at DEVICE and the programs that use the link: passes everything\n"
    "on, and prints each message in words. Goes on until SIGINT, SIGTERM or SIGHUP.";

struct TapOptions {
  fs::path device;
  std::optional<unsigned int> baud;
  fs::path link;
  fs::path trace;
};

/// Fails where the link would take the place of the port's own name.
void checkLink(const TapOptions& options) {
  if (fs::absolute(options.link).lexically_normal() ==
      fs::absolute(options.device).lexically_normal()) {
    throw Failure("--link is DEVICE itself; clients need another name");
  }
}

int tap(const TapOptions& options) {
  checkLink(options);
  requireFreeLink(options.link);
  const EndSignals end;
  OwnedDescriptor port = openSerialPort(options.device, options.baud);
  std::optional<TraceWriter> trace;
  if (!options.trace.empty()) {
    trace.emplace(options.trace, options.device);
  }
  Tap tap(std::move(port), options.device, options.link, std::move(trace));
  announceLine(options.link, tap.tty());
  tap.run(end);
  return 0;
}

}  // namespace

void addTap(CLI::App& app, Invocation& invocation) {
  CLI::App* const subcommand =
      addSubcommand(app, "tap", "DEVICE --link PATH [OPTIONS]", kTapDescription);
  const auto options = std::make_shared<TapOptions>();
  addPath(*subcommand, "DEVICE", "", options->device, "The serial port with the receiver")
      ->required();
  addLinkOption(*subcommand, options->link)->required();
  addPath(*subcommand, "--trace", "FILE", options->trace,
          "Records all bytes in this file, for orb-sim replay and decode");
  addOption(
      *subcommand, "--baud", "N", "The receiver's speed; without it, DEVICE keeps its own",
      [options](const std::string& text) { options->baud = wholeNumber<unsigned int>(text); });
  invocation.actions[subcommand] = [options] { return tap(*options); };
}

}  // namespace orb::sim
