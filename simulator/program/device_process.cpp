#include "program/device_process.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <system_error>

#include "program/failure.h"
#include "program/process.h"
#include "program/process_tree.h"
#include "program/signals.h"
#include "program/simulated_device.h"

namespace orb::sim {
namespace {

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
void passEarlySignals(pid_t command, const OwnedDescriptor& connection) {
  PassedSignal signal;
  while (recv(connection.get(), &signal, sizeof signal, MSG_DONTWAIT) > 0) {
    kill(command, signal.number);
  }
}

/// Collects the children that have ended. Whether the command is among them; then `status` is its.
bool collect(pid_t command, int& status) {
  for (;;) {
    int ended = 0;
    const pid_t child = waitpid(-1, &ended, WNOHANG);
    if (child <= 0) return false;
    if (child == command) {
      status = shellStatus(ended);
      return true;
    }
  }
}

/// Waits for the command's end and passes signals on to it. Returns its exit status, or
/// kExitOwnFailure where the other process has gone.
int superviseCommand(pid_t command, const OwnedDescriptor& connection) {
  const OwnedDescriptor childSignals = signalSource(signalSet({SIGCHLD}));
  pollfd sources[] = {{childSignals.get(), POLLIN, 0}, {connection.get(), POLLIN, 0}};
  for (;;) {
    if (poll(sources, std::size(sources), -1) < 0) {
      if (errno == EINTR) continue;
      throw std::system_error(errno, std::generic_category(), "poll");
    }
    if (sources[0].revents != 0) {
      takeSignal(childSignals);
      int status = 0;
      if (collect(command, status)) return status;
    }
    if (sources[1].revents != 0) {
      PassedSignal signal;
      if (recv(connection.get(), &signal, sizeof signal, 0) <= 0) return kExitOwnFailure;
      if (!signal.fromTerminal) kill(command, signal.number);
    }
  }
}

int runCommand(const RunOptions& options, const Front& front) {
  adoptOrphans();
  const SimulatedDevice device(options, front.folder.path());
  const pid_t command = startCommand(options, front, device);
  passEarlySignals(command, front.connection);
  leaveInputAndOutput();
  return superviseCommand(command, front.connection);
}

}  // namespace

int runDevice(const RunOptions& options, const Front& front) noexcept {
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
