#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "line/pty_port.h"
#include "orb-sim/device.h"
#include "support/simulated_sleep.h"
#include "support/wall_clock.h"

namespace orb::test {

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
  SimulatedLine(sim::Device& device, const std::filesystem::path& link);
  SimulatedLine(const SimulatedLine&) = delete;
  SimulatedLine& operator=(const SimulatedLine&) = delete;

  /// Lets time pass. Throws WaitsForEver at the limit.
  void pass(Nanoseconds duration);
  void setLimit(Nanoseconds fromNow) { limit_ = now_ + fromNow; }

  Nanoseconds now() const { return now_; }

  /// What the client could read since the last forget().
  const sim::Bytes& delivered() const { return delivered_; }
  void forget() { delivered_.clear(); }

 private:
  void deliver(sim::Bytes bytes);

  sim::Device& device_;
  std::filesystem::path link_;
  std::optional<sim::PtyPort> port_;
  WallClock clock_;
  SimulatedSleep sleep_;
  Nanoseconds now_{0};
  Nanoseconds limit_ = Nanoseconds::max();
  Nanoseconds deviceTime_{0};
  sim::Bytes delivered_;
};

}  // namespace orb::test
