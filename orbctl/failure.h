#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace orb::ctl {

/// How orbctl ends.
enum class ExitStatus {
  Success = 0,
  Refused = 1,     // refused, or read back differently
  WrongUse = 2,    // of the command line
  NoReply = 3,     // none in time, or a missed deadline
  NotSent = 4,     // or no device
  NoReceiver = 5,  // or no module
  Held = 6,        // by another process
  Other = 7        // an error of this machine, or of orbctl
};

/// What ends a command: its text says what is wrong, its hint what to try next.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& text, std::string hint = {},
          unsigned int resultBits = 0, std::string findings = {})
      : std::runtime_error(text),
        status_(status),
        hint_(std::move(hint)),
        findings_(std::move(findings)),
        bits_(resultBits) {}

  ExitStatus status() const { return status_; }
  const std::string& hint() const { return hint_; }
  /// What the command found before it failed, as a JSON object; empty where that is nothing.
  const std::string& findings() const { return findings_; }

  /// The operation's result; 0 where none was called.
  unsigned int resultBits() const { return bits_; }

 private:
  ExitStatus status_;
  std::string hint_;
  std::string findings_;
  unsigned int bits_;
};

}  // namespace orb::ctl
