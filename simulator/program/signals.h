#pragma once

#include <csignal>
#include <initializer_list>

#include "base/owned_descriptor.h"

namespace orb::sim {

sigset_t signalSet(std::initializer_list<int> signals);

/// The signals that are passed on to a command: those that ask a program to end, and those that
/// are for programs to use as they like. Job control is left to the kernel, which stops and
/// continues the command and orb-sim together.
sigset_t passedOnSignals();

/// Blocks the signals in this process; returns what was blocked before.
sigset_t blockSignals(const sigset_t& signals);

/// Waits for one of these blocked signals and takes it.
siginfo_t takeSignal(const sigset_t& signals);

/// Waits for the signals by which a user or a service manager ends a program that would go on for
/// ever, and lets it outlive the readers of its output. As long as this exists, they do nothing
/// else; threads that are started meanwhile never see them.
class EndSignals {
 public:
  EndSignals();
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;
  ~EndSignals();

  /// Can be read when one of them has come.
  int descriptor() const { return source_.get(); }

  /// Says on standard error which has come.
  void wait() const;

 private:
  sigset_t signals_;
  sigset_t before_;
  OwnedDescriptor source_;
};

}  // namespace orb::sim
