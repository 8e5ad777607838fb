#include <cstdint>
#include <filesystem>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "program/command_line.h"
#include "program/failure.h"
#include "program/listing_options.h"
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
    "on, and prints each message in words. Without a link, prints what the receiver says of its\n"
    "own accord. Goes on until SIGINT, SIGTERM or SIGHUP.";

struct TapOptions {
  fs::path device;
  std::optional<unsigned int> baud;
  fs::path link;
  fs::path trace;
  bool appends = false;
  bool replaces = false;
  std::uint64_t rotation = 0;
};

/// Fails where the link would take the place of the port's own name.
void checkLink(const TapOptions& options) {
  if (fs::absolute(options.link).lexically_normal() ==
      fs::absolute(options.device).lexically_normal()) {
    throw Failure("--link is DEVICE itself; clients need another name");
  }
}

/// Fails where the trace would take the place of something that is wanted still.
void checkTrace(const TapOptions& options) {
  std::error_code ignored;
  const fs::path there = fs::canonical(options.trace, ignored);
  if (!there.empty() && there == fs::canonical(options.device, ignored)) {
    throw Failure("--trace is DEVICE itself; the trace needs a file");
  }
  if (options.appends || options.replaces) {
    return;
  }
  if (fs::is_regular_file(options.trace, ignored)) {
    throw Failure(options.trace.string() +
                  " is there already; --append goes on with it, --force replaces it");
  }
  const std::string rotated = options.trace.string() + ".1";
  if (options.rotation != 0 && fs::exists(rotated, ignored)) {
    throw Failure(rotated + " is there already; with --append or --force, --rotate replaces it");
  }
}

TraceWriter openTrace(const TapOptions& options) {
  std::error_code ignored;
  bool isCut = false;
  TraceWriter trace = options.appends && fs::exists(options.trace, ignored)
                          ? TraceWriter(options.trace, &isCut)
                          : TraceWriter(options.trace, options.device);
  if (isCut) {
    warnOfCutTrace(options.trace);
  }
  if (options.rotation != 0) {
    trace.rotateAt(options.rotation, options.device);
  }
  return trace;
}

void announce(const TapOptions& options, const Tap& tap) {
  if (options.link.empty()) {
    std::cerr << "orb-sim: listens to " << options.device.string() << '\n';
  } else {
    announceLine(options.link, tap.tty());
  }
}

int tap(const TapOptions& options, const ListingForm& form) {
  checkTrace(options);
  if (!options.link.empty()) {
    checkLink(options);
    requireFreeLink(options.link);
  }
  const EndSignals end;
  OwnedDescriptor port = openSerialPort(options.device, options.baud);
  std::optional<TraceWriter> trace;
  if (!options.trace.empty()) {
    trace.emplace(openTrace(options));
  }
  Tap tap(std::move(port), options.device, options.link, std::move(trace), form);
  announce(options, tap);
  tap.run(end);
  end.wait();
  return 0;
}

}  // namespace

void addTap(CLI::App& app, Invocation& invocation) {
  CLI::App* const subcommand = addSubcommand(app, "tap", "DEVICE [OPTIONS]", kTapDescription);
  const auto options = std::make_shared<TapOptions>();
  addPath(*subcommand, "DEVICE", "", options->device, "The serial port with the receiver")
      ->required();
  addLinkOption(*subcommand, options->link);
  CLI::Option* const trace =
      addPath(*subcommand, "--trace", "FILE", options->trace,
              "Records all bytes in this file, for orb-sim replay and decode");
  CLI::Option* const append = subcommand->add_flag(
      "--append", options->appends, "Goes on with the trace in FILE, if there is one");
  append->needs(trace);
  subcommand->add_flag("--force", options->replaces, "Replaces FILE, if there is one")
      ->excludes(append);
  subcommand
      ->add_option(
          "--rotate", options->rotation,
          "Before FILE gets larger than this, as in 10MB, it becomes FILE.1, and begins anew")
      ->type_name("SIZE")
      ->transform(CLI::AsSizeValue(false))
      ->check(CLI::Range(std::int64_t{1000}, std::numeric_limits<std::int64_t>::max()))
      ->needs(trace);
  addOption(
      *subcommand, "--baud", "N", "The receiver's speed; without it, DEVICE keeps its own",
      [options](const std::string& text) { options->baud = wholeNumber<unsigned int>(text); });
  const auto form = addListingOptions(*subcommand);
  invocation.actions[subcommand] = [options, form] { return tap(*options, *form); };
}

}  // namespace orb::sim
