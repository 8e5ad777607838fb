#pragma once

#include <csignal>

#include "i2c/port_expander.h"

namespace orb::sim {

/// The port expander whose registers are in a file, for the length of one transfer. Other processes
/// and threads wait; signal handlers come later, since one that used the bus would wait for ever.
/// Allocates nothing, and is no point at which a thread is cancelled.
class SharedRegisters {
 public:
  explicit SharedRegisters(const char* path) noexcept;
  SharedRegisters(const SharedRegisters&) = delete;
  SharedRegisters& operator=(const SharedRegisters&) = delete;
  ~SharedRegisters();

  /// 0, or why the registers cannot be had, as a negative error number: -EIO where the file is
  /// damaged.
  int error() const noexcept { return error_; }

  PortExpander& expander() noexcept { return expander_; }

  /// Writes the registers back; returns 0 or a negative error number.
  int store() noexcept;

 private:
  int load() noexcept;

  PortExpander expander_;
  sigset_t signalsBefore_;
  int descriptor_;
  int error_;
};

}  // namespace orb::sim
