#include "program/run.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>

#include "program/command_file.h"
#include "program/device_process.h"
#include "program/failure.h"
#include "program/private_folder.h"
#include "program/process.h"
#include "program/process_tree.h"
#include "program/serial_port.h"
#include "program/signals.h"

namespace orb::sim {
namespace {

struct Connection {
  OwnedDescriptor front;
  OwnedDescriptor device;
};

Connection connect() {
  int ends[2] = {-1, -1};
  const int result = socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends);
  if (result != 0) throw std::system_error(errno, std::generic_category(), "socketpair");
  return {{ends[0], "socketpair"}, {ends[1], "socketpair"}};
}

/// The process with the device: alone in a process group, so that the terminal's signals reach the
/// command and not it.
pid_t forkDevice(const RunOptions& options, Connection& connection, Front front) {
  const pid_t process = fork();
  if (process < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (process > 0) return process;
  connection.front.reset();
  setpgid(0, 0);
  sigset_t all;
  sigfillset(&all);
  blockSignals(all);
  front.connection = std::move(connection.device);
  std::exit(runDevice(options, front));
}

void passOn(const signalfd_siginfo& signal, const OwnedDescriptor& connection) {
  const int number = static_cast<int>(signal.ssi_signo);
  // When a terminal hangs up, the kernel tells its session's leader alone, which this may be.
  const bool fromTerminal = signal.ssi_code == SI_KERNEL && number != SIGHUP;
  const PassedSignal passed{number, fromTerminal};
  send(connection.get(), &passed, sizeof passed, MSG_NOSIGNAL);
}

/// Passes signals on until the process with the device has ended; returns its exit status.
int wait(pid_t device, const OwnedDescriptor& connection, const OwnedDescriptor& signals) {
  int status = 0;
  while (waitpid(device, &status, WNOHANG) == 0) {
    const signalfd_siginfo signal = takeSignal(signals);
    if (signal.ssi_signo != SIGCHLD) passOn(signal, connection);
  }
  if (!WIFEXITED(status)) throw Failure("the process with the simulated device was killed");
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
  if (!options.tty.empty() && !std::filesystem::exists(options.tty)) {
    throw Failure("--tty: " + options.tty.string() + " does not exist");
  }
  if (!options.tty.empty() && !mayBeTerminal(options.tty)) {
    throw Failure("--tty: " + options.tty.string() + " is no terminal");
  }
  sigset_t watched = passedOnSignals();
  sigaddset(&watched, SIGCHLD);
  const sigset_t before = blockSignals(watched);
  const OwnedDescriptor signals = signalSource(watched);
  adoptOrphans();
  Connection connection = connect();
  const PrivateFolder folder;
  const ClearUp clearUp{folder};
  const pid_t device =
      forkDevice(options, connection, {command, folder, getpgrp(), before, OwnedDescriptor()});
  connection.device.reset();
  leaveInputAndOutput();
  return wait(device, connection.front, signals);
}

}  // namespace orb::sim
