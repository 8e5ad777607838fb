#pragma once

#include <csignal>
#include <filesystem>

#include "program/private_folder.h"
#include "program/run.h"

namespace orb::sim {

/// What the process with the device has from its parent, the front, which the user started.
struct Front {
  std::filesystem::path command;  ///< the program file to run
  const PrivateFolder& folder;
  pid_t process;            ///< the front itself
  pid_t group;              ///< the process group that the command belongs in
  sigset_t blockedSignals;  ///< the signals that the command finds blocked
};

/// Has the process with the device pass a signal on to the command. One from the terminal has
/// reached the whole foreground, the command included if it runs already.
void passOn(pid_t deviceProcess, int signal, bool fromTerminal);

/// Sets the device up, runs the command on it and clears everything up after it. To be called in a
/// process forked for it, with the passed-on signals blocked. Ends the command when the front is
/// gone. Returns the exit status for the shell; says on standard error what goes wrong.
int runDevice(const RunOptions& options, const Front& front) noexcept;

}  // namespace orb::sim
