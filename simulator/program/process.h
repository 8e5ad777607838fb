#pragma once

#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace orb::sim {

/// How a child process is to be started.
struct ProcessStart {
  std::filesystem::path file;
  std::vector<std::string> arguments;  ///< from argv[0] on
  std::vector<std::string> variables;  ///< the whole environment, "NAME=value"

  /// A file to append output and errors to. The child then has no input and none of this process's
  /// descriptors. Empty: the child has all that are not closed on exec.
  std::filesystem::path log;

  std::optional<pid_t> group;  ///< the process group to join instead of this process's
  sigset_t blockedSignals{};   ///< default: none
};

/// Starts a child, which is killed when this process ends however it ends. Every signal that this
/// process does not ignore has its default action in the child. Throws std::system_error where the
/// file cannot be executed.
pid_t startProcess(const ProcessStart& start);

/// This process's environment with the variables `added` ("NAME=value"), which replace any of the
/// same name.
std::vector<std::string> environmentWith(const std::vector<std::string>& added);

/// Puts /dev/null in the place of standard input and output, so that they end for others when the
/// command closes them.
void leaveInputAndOutput();

/// The exit status as a shell tells it: 128 and the signal's number for a process that a signal
/// has ended.
int shellStatus(int waitStatus);

/// Lets the processes that this one's descendants leave behind become its own children, instead of
/// escaping.
void adoptOrphans();

/// Kills every child of this process, and theirs as they become its own, until there is none.
/// Children that may not be killed, having gained other rights, are left.
void endAllChildren() noexcept;

}  // namespace orb::sim
