#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "orb-sim/scenario.h"
#include "program/replayed_trace.h"

namespace orb::sim {

/// How a COMMAND is to be run.
struct RunOptions {
  Scenario scenario;

  /// What answers in the place of the scenario's receiver.
  std::shared_ptr<ReplayedTrace> replay;

  /// The line that COMMAND finds at /dev/tty_gps instead of one with a simulated receiver.
  std::filesystem::path tty;

  /// Where the events at the timing outputs are noted; empty: nowhere.
  std::filesystem::path pulses;

  /// Where the log and identity files are left; empty: they go with the run.
  std::filesystem::path keep;

  /// COMMAND and its arguments, as the user gave them.
  std::vector<std::string> command;
};

/// Runs the command on a simulated device of its own; returns the exit status for the shell.
///
/// Two processes share the work, so that either can clear up when the other is killed. The first,
/// which the user sees, stays in the foreground, passes signals on and waits. The second has the
/// device and is the command's parent. Both adopt the processes that the command leaves behind, and
/// end them.
int run(const RunOptions& options);

}  // namespace orb::sim
