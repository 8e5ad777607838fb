#pragma once

#include <chrono>

namespace orb {

/// The sleeps between looks at a line that has no byte to give.
///
/// Each sleep is a fixed share of the time slept so far: a reply that is nearly there is seen at
/// once, one that takes long is seen late by a small part of its delay, and a line that stays
/// silent costs next to no processor. The clock is never read.
class Silence {
 public:
  /// How long to sleep before the next look.
  constexpr std::chrono::nanoseconds nextSleep() const {
    using std::chrono::microseconds;
    using std::chrono::milliseconds;
    constexpr microseconds kShortest(50);
    constexpr milliseconds kLongest(4);
    constexpr milliseconds kLongestWhenIdle(12);
    constexpr int kShare = 8;

    const std::chrono::nanoseconds longest =
        slept_ < std::chrono::seconds(1) ? kLongest : kLongestWhenIdle;
    const std::chrono::nanoseconds share = slept_ / kShare;
    return share < kShortest ? kShortest : share < longest ? share : longest;
  }

  /// Sleeps for nextSleep().
  void sleep();

 private:
  std::chrono::nanoseconds slept_{0};
};

}  // namespace orb
