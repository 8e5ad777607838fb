#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "support/files.h"

namespace orb::test {

/// A program that runs beside the test and never outlives it.
///
/// The kernel kills it when the thread that started it ends, however that comes: start it from a
/// thread that lives as long as the object.
class ChildProcess {
 public:
  /// Runs a command, its program looked for on the PATH. What it writes to standard output and
  /// standard error goes to the end of `outputFile`. Throws std::system_error when there can be no
  /// process; a program that cannot be run ends with status 127.
  ChildProcess(const std::vector<std::string>& command, std::filesystem::path outputFile);

  /// Stops it.
  ~ChildProcess();

  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  bool isRunning() { return !wait(std::chrono::milliseconds(0)); }

  /// Asks the program to end (SIGTERM), kills it when it has not after ten seconds, and returns its
  /// exit status: that of the shell, 128 + N after signal N. Once ended it keeps the status it has.
  int stop();

  /// Waits until the program ends; returns its exit status, or nothing when it still runs then.
  std::optional<int> wait(std::chrono::milliseconds limit);

  /// All that it has written so far.
  std::string output() const { return contentOf(outputFile_); }

  pid_t pid() const { return pid_; }

 private:
  std::filesystem::path outputFile_;
  pid_t pid_ = -1;
  std::optional<int> status_;
};

}  // namespace orb::test
