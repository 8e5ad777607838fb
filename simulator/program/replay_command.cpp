#include <filesystem>
#include <iostream>
#include <memory>

#include "orb-sim/pty_line.h"
#include "orb-sim/replay.h"
#include "orb-sim/trace.h"
#include "program/command_line.h"
#include "program/failure.h"
#include "program/offered_line.h"
#include "program/run.h"
#include "program/signals.h"
#include "program/standard_streams.h"

namespace orb::sim {
namespace {

constexpr char kReplayDescription[] =
    "Plays the receiver's side of a trace back\n\n"
    "A packet gets the answer that the trace has to its next occurrence; after the last one, they\n"
    "begin anew. A packet that the trace does not have is refused. With COMMAND, runs it as\n"
    "orb-sim run does; with --link, goes on until it is ended.";

struct ReplayOptions {
  std::filesystem::path trace;
  std::filesystem::path link;
  bool fast = false;
};

int offer(const Replay& replay, const std::filesystem::path& link) {
  requireFreeLink(link);
  const EndSignals end;
  ReplayDevice receiver(replay.trace, replay.pace);
  const PtyLine line(receiver, link);
  announceLine(link, line.path());
  warnOfLostOutput();
  end.wait();
  std::cout << "orb-sim: packets that the trace does not have: " << receiver.refused() << '\n';
  return 0;
}

int replay(const ReplayOptions& options, const std::vector<std::string>& command) {
  if (options.link.empty() == command.empty()) {
    throw Failure("give either --link PATH or COMMAND, after --");
  }
  bool isCut = false;
  Replay replay{loadTrace(options.trace, &isCut),
                options.fast ? ReplayDevice::Pace::Fast : ReplayDevice::Pace::Recorded};
  if (isCut) {
    warnOfCutTrace(options.trace);
  }
  if (command.empty()) {
    return offer(replay, options.link);
  }
  RunOptions run;
  run.replay = std::move(replay);
  run.command = command;
  return sim::run(run);
}

}  // namespace

void addReplay(CLI::App& app, Invocation& invocation) {
  CLI::App* const subcommand =
      addSubcommand(app, "replay", "TRACE (--link PATH | -- COMMAND [ARG...])", kReplayDescription);
  const auto options = std::make_shared<ReplayOptions>();
  addPath(*subcommand, "TRACE", "", options->trace, "What orb-sim tap has recorded")->required();
  addLinkOption(*subcommand, options->link);
  subcommand->add_flag("--fast", options->fast,
                       "Answers come at once, not with their recorded delays");
  invocation.commandTakers.insert(subcommand);
  invocation.actions[subcommand] = [options, &invocation] {
    return replay(*options, invocation.command);
  };
}

}  // namespace orb::sim
