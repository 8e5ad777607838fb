#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace orb::sim {

/// The exit statuses of orb-sim where there is no COMMAND's, as env(1) and timeout(1) have them.
inline constexpr int kExitOwnFailure = 125;
inline constexpr int kExitNotStartable = 126;
inline constexpr int kExitNotFound = 127;

/// Why orb-sim gives up: a message for the user, and the exit status.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& message, int status = kExitOwnFailure)
      : std::runtime_error(message), status_(status) {}

  int status() const { return status_; }

 private:
  int status_;
};

/// Says on standard error why orb-sim gives up, each line with the program's name in front.
/// Returns the exit status.
int report(const std::exception& error);

/// Says on standard error that the last line of this trace was left out.
void warnOfCutTrace(const std::string& name);

}  // namespace orb::sim
