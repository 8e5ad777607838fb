#pragma once

#include "program/run_options.h"

namespace orb::sim {

/// Runs the command on a simulated device of its own; returns the exit status for the shell.
///
/// Two processes share the work, so that either can clear up when the other is killed. The first,
/// which the user sees, stays in the foreground, passes signals on and waits. The second has the
/// device and is the command's parent. Both adopt the processes that the command leaves behind, and
/// end them.
int run(const RunOptions& options);

}  // namespace orb::sim
