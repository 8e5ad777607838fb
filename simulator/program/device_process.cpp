#include "program/device_process.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <exception>
#include <system_error>

#include "program/failure.h"
#include "program/process.h"
#include "program/signals.h"
#include "program/simulated_device.h"

namespace orb::sim {
namespace {

/// The signal that carries a passed-on one as its value, negative when it is from the terminal. It
/// is also what the kernel sends when the front is gone. A real-time signal, since those queue.
int carrier() { return SIGRTMIN; }

/// Starts the command where the shell would have: in the foreground, with the user's input, output
/// and signals.
pid_t startCommand(const RunOptions& options, const Front& front, const SimulatedDevice& device) {
  ProcessStart start;
  start.file = front.command;
  start.arguments = options.command;
  start.variables = environmentWith(device.variablesFor(front.command));
  start.group = front.group;
  start.blockedSignals = front.blockedSignals;
  try {
    return startProcess(start);
  } catch (const std::system_error& error) {
    // A text without an interpreter's name in its first line is a shell script to a shell.
    if (error.code() != std::errc::executable_format_error) {
      throw Failure(error.what(), kExitNotStartable);
    }
  }
  start.file = "/bin/sh";
  start.arguments.front() = front.command;
  start.arguments.insert(start.arguments.begin(), "sh");
  return startProcess(start);
}

/// Passes on what came before the command could get it.
void passEarlySignals(pid_t command) {
  const sigset_t early = signalSet({carrier()});
  const timespec atOnce{0, 0};
  siginfo_t signal{};
  while (sigtimedwait(&early, &signal, &atOnce) > 0) {
    if (signal.si_code == SI_QUEUE) {
      kill(command, std::abs(signal.si_value.sival_int));
    }
  }
}

/// Collects the children that have ended. Whether the command is among them; then `status` is its.
bool collect(pid_t command, int& status) {
  for (;;) {
    int ended = 0;
    const pid_t child = waitpid(-1, &ended, WNOHANG);
    if (child <= 0) {
      return false;
    }
    if (child == command) {
      status = shellStatus(ended);
      return true;
    }
  }
}

/// Waits for the command's end and passes signals on to it. Returns its exit status, or
/// kExitOwnFailure where the front is gone.
int superviseCommand(pid_t command, pid_t front) {
  const sigset_t awaited = signalSet({SIGCHLD, carrier()});
  while (getppid() == front) {
    const siginfo_t signal = takeSignal(awaited);
    int status = 0;
    if (signal.si_signo == SIGCHLD && collect(command, status)) {
      return status;
    }
    if (signal.si_code == SI_QUEUE && signal.si_value.sival_int > 0) {
      kill(command, signal.si_value.sival_int);
    }
  }
  return kExitOwnFailure;
}

int runCommand(const RunOptions& options, const Front& front) {
  adoptOrphans();
  const auto endCommand = [] { passOn(getpid(), SIGTERM, false); };
  const SimulatedDevice device(options, front.folder.path(), endCommand);
  const pid_t command = startCommand(options, front, device);
  passEarlySignals(command);
  leaveInputAndOutput();
  const int status = superviseCommand(command, front.process);
  return options.replay ? options.replay->conclude(status) : status;
}

}  // namespace

void passOn(pid_t deviceProcess, int signal, bool fromTerminal) {
  sigval value{};
  value.sival_int = fromTerminal ? -signal : signal;
  sigqueue(deviceProcess, carrier(), value);
}

int runDevice(const RunOptions& options, const Front& front) noexcept {
  // Alone in a process group, so that the terminal's signals reach the command and not this.
  setpgid(0, 0);
  sigset_t all;
  sigfillset(&all);
  blockSignals(all);
  prctl(PR_SET_PDEATHSIG, carrier());
  int status = kExitOwnFailure;
  try {
    status = runCommand(options, front);
  } catch (const std::exception& error) {
    status = report(error);
  }
  endAllChildren();
  front.folder.remove();
  return status;
}

}  // namespace orb::sim
