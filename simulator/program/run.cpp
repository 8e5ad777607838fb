#include "program/run.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "base/checked.h"
#include "program/command_file.h"
#include "program/device_process.h"
#include "program/failure.h"
#include "program/private_folder.h"
#include "program/process.h"
#include "program/serial_port.h"
#include "program/signals.h"

namespace orb::sim {
namespace {

void checkTerminal(const std::filesystem::path& tty) {
  if (!std::filesystem::exists(tty)) {
    throw Failure("--tty: " + tty.string() + " does not exist");
  }
  if (!mayBeTerminal(tty)) {
    throw Failure("--tty: " + tty.string() + " is no terminal");
  }
}

pid_t forkDevice(const RunOptions& options, const Front& front) {
  const pid_t process = checked(fork(), "fork");
  if (process == 0) {
    std::exit(runDevice(options, front));
  }
  return process;
}

/// Passes signals on until the process with the device has ended; returns its exit status.
int wait(pid_t device, const sigset_t& signals) {
  int status = 0;
  while (waitpid(device, &status, WNOHANG) == 0) {
    const siginfo_t signal = takeSignal(signals);
    if (signal.si_signo != SIGCHLD) {
      // When a terminal hangs up, the kernel tells its session's leader alone, which this may be.
      const bool fromTerminal = signal.si_code == SI_KERNEL && signal.si_signo != SIGHUP;
      passOn(device, signal.si_signo, fromTerminal);
    }
  }
  if (!WIFEXITED(status)) {
    throw Failure("the process with the simulated device was killed");
  }
  return WEXITSTATUS(status);
}

/// Does what the process with the device left undone where it was killed.
struct ClearUp {
  ~ClearUp() {
    endAllChildren();
    folder.remove();
  }
  const PrivateFolder& folder;
};

}  // namespace

int run(const RunOptions& options) {
  const std::filesystem::path command = commandFile(options.command.front());
  if (!options.tty.empty()) {
    checkTerminal(options.tty);
  }
  sigset_t watched = passedOnSignals();
  sigaddset(&watched, SIGCHLD);
  const sigset_t before = blockSignals(watched);
  adoptOrphans();
  const PrivateFolder folder;
  const ClearUp clearUp{folder};
  const pid_t device = forkDevice(options, {command, folder, getpid(), getpgrp(), before});
  leaveInputAndOutput();
  return wait(device, watched);
}

}  // namespace orb::sim
