#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "line/pty.h"
#include "line/stable_link.h"
#include "orb-sim/device.h"

namespace orb::sim::test {

/// What ends a wait that lasts longer than any can: the client would wait for ever.
struct WaitsForEver : std::runtime_error {
  WaitsForEver() : std::runtime_error("the client still waits") {}
};

/// A pty with a device at its far end, in simulated time: while the object lives, time passes in
/// this program only where it sleeps, and it sleeps without taking any. What the client has written
/// reaches the device when the client next sleeps. So a run depends on its seed alone, not on the
/// machine, and hours of time-outs take seconds.
class SimulatedLine {
 public:
  using Nanoseconds = std::chrono::nanoseconds;

  /// A link of this name leads to the tty, also after a hang-up.
  SimulatedLine(Device& device, const std::filesystem::path& link);
  SimulatedLine(const SimulatedLine&) = delete;
  SimulatedLine& operator=(const SimulatedLine&) = delete;
  ~SimulatedLine();

  /// Lets time pass. Throws WaitsForEver at the limit.
  void pass(Nanoseconds duration);
  void setLimit(Nanoseconds fromNow) { limit_ = now_ + fromNow; }

  Nanoseconds now() const { return now_; }

  /// What the client could read since the last forget().
  const Bytes& delivered() const { return delivered_; }
  void forget() { delivered_.clear(); }

  /// For the replaced functions.
  static SimulatedLine* current();

 private:
  void deliver(Bytes bytes);

  Device& device_;
  std::unique_ptr<Pty> pty_;
  StableLink link_;
  Nanoseconds now_{0};
  Nanoseconds limit_ = Nanoseconds::max();
  Nanoseconds deviceTime_{0};
  Bytes delivered_;
};

}  // namespace orb::sim::test
