#pragma once

#include <csignal>
#include <filesystem>

#include "line/owned_descriptor.h"
#include "program/private_folder.h"
#include "program/run_options.h"

namespace orb::sim {

/// What the front sends for a signal that it gets.
struct PassedSignal {
  int number;
  bool fromTerminal;  ///< the whole foreground has it already, the command if it runs
};

/// What the process with the device has from the one that the user started.
struct Front {
  std::filesystem::path command;  ///< the program file to run
  PrivateFolder folder;
  pid_t group;                 ///< the process group that the command belongs in
  sigset_t blockedSignals;     ///< the signals that the command finds blocked
  OwnedDescriptor connection;  ///< Brings each PassedSignal; ends when the front is gone.
};

/// Sets the device up, runs the command on it and clears everything up after it. Returns the exit
/// status for the shell; says on standard error what goes wrong.
int runDevice(const RunOptions& options, const Front& front) noexcept;

}  // namespace orb::sim
