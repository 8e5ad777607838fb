#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "orb-sim/pty_line.h"
#include "program/command_line.h"
#include "program/failure.h"
#include "program/offered_line.h"
#include "program/replayed_trace.h"
#include "program/run.h"
#include "program/signals.h"

namespace orb::sim {
namespace {

constexpr char kReplayDescription[] =
    "Plays the receiver's side of a trace back\n\n"
    "A packet gets the answer that the trace has to its next occurrence; after the last one, they\n"
    "begin anew. With COMMAND, runs it as orb-sim run does; with --link, goes on until it is "
    "ended.";

constexpr std::pair<std::string_view, ReplayedTrace::Unknown> kUnknown[] = {
    {"refuse", ReplayedTrace::Unknown::Refuse},
    {"silent", ReplayedTrace::Unknown::Silent},
    {"exit", ReplayedTrace::Unknown::Exit}};

struct ReplayOptions {
  std::filesystem::path trace;
  std::filesystem::path link;
  ReplayedTrace::Unknown unknown = ReplayedTrace::Unknown::Refuse;
  bool fast = false;
};

int offer(ReplayedTrace& trace, const std::filesystem::path& link) {
  requireFreeLink(link);
  const EndSignals end;
  const std::unique_ptr<Device> receiver = trace.receiver([] { kill(getpid(), SIGTERM); });
  const PtyLine line(*receiver, link);
  announceLine(link, line.path());
  end.wait();
  return trace.conclude(0);
}

int replay(const ReplayOptions& options, const std::vector<std::string>& command) {
  if (options.link.empty() == command.empty()) {
    throw Failure("give either --link PATH or COMMAND, after --");
  }
  bool isCut = false;
  const auto trace = std::make_shared<ReplayedTrace>(
      loadTrace(options.trace, &isCut),
      options.fast ? ReplayDevice::Pace::Fast : ReplayDevice::Pace::Recorded, options.unknown);
  if (isCut) {
    warnOfCutTrace(options.trace);
  }
  if (command.empty()) {
    return offer(*trace, options.link);
  }
  RunOptions run;
  run.replay = trace;
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
  addOption(*subcommand, "--unknown", "WHAT",
            "What happens to a packet that the trace does not have: refuse, silent, or exit,\n"
            "which ends COMMAND by SIGTERM, with status 125. Default: refuse",
            [options](const std::string& word) {
              const auto* const found =
                  std::find_if(std::begin(kUnknown), std::end(kUnknown),
                               [&](const auto& known) { return known.first == word; });
              if (found == std::end(kUnknown)) {
                throw CLI::ValidationError(word + " is none of refuse silent exit");
              }
              options->unknown = found->second;
            });
  invocation.commandTakers.insert(subcommand);
  invocation.actions[subcommand] = [options, &invocation] {
    return replay(*options, invocation.command);
  };
}

}  // namespace orb::sim
