#pragma once

#include <chrono>
#include <functional>

namespace orb::test {

/// While it exists, sleeping takes no time in this program, nor does giving way to other threads:
/// both are only counted. One thread, one object at a time.
class SimulatedSleep {
 public:
  using Nanoseconds = std::chrono::nanoseconds;

  SimulatedSleep();
  SimulatedSleep(const SimulatedSleep&) = delete;
  SimulatedSleep& operator=(const SimulatedSleep&) = delete;
  ~SimulatedSleep();

  /// What happens in a sleep, where it is set. It may throw.
  std::function<void(Nanoseconds)> onSleep;

  /// How long was slept so far.
  Nanoseconds slept() const { return slept_; }
  /// How often.
  int sleeps() const { return sleeps_; }
  /// How often the thread gave way to others.
  int yields() const { return yields_; }

  // For the replaced functions.

  static SimulatedSleep* current();
  void sleep(Nanoseconds duration);
  void noteYield() { ++yields_; }

 private:
  Nanoseconds slept_{0};
  int sleeps_ = 0;
  int yields_ = 0;
};

}  // namespace orb::test
