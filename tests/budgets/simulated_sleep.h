#pragma once

#include <chrono>

namespace orb::test {

/// While it exists, sleeping takes no time in this program: it only moves a clock of its own. Other
/// ways to wait and to look at the clock are counted. One thread, one object at a time.
class SimulatedSleep {
 public:
  SimulatedSleep();
  SimulatedSleep(const SimulatedSleep&) = delete;
  SimulatedSleep& operator=(const SimulatedSleep&) = delete;
  ~SimulatedSleep();

  /// How long was slept so far.
  std::chrono::nanoseconds slept() const { return slept_; }
  /// How often.
  int sleeps() const { return sleeps_; }
  /// How often the thread gave way to others.
  int yields() const { return yields_; }
  /// How often a poll, a select or the like, or a reading of a clock other than time() was asked
  /// for.
  int otherCalls() const { return otherCalls_; }

  // For the replaced functions.

  static SimulatedSleep* current();
  void sleep(std::chrono::nanoseconds duration);
  void noteYield() { ++yields_; }
  void noteOtherCall() { ++otherCalls_; }

 private:
  std::chrono::nanoseconds slept_{0};
  int sleeps_ = 0;
  int yields_ = 0;
  int otherCalls_ = 0;
};

}  // namespace orb::test
