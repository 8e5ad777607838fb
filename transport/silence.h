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
    using namespace std::chrono_literals;
    constexpr std::chrono::nanoseconds kShortest = 50us;
    constexpr std::chrono::nanoseconds kLongest = 4ms;
    constexpr std::chrono::nanoseconds kLongestWhenIdle = 12ms;
    constexpr int kShare = 8;

    const std::chrono::nanoseconds longest = slept_ < 1s ? kLongest : kLongestWhenIdle;
    const std::chrono::nanoseconds share = slept_ / kShare;
    return share < kShortest ? kShortest : share < longest ? share : longest;
  }

  /// Sleeps for nextSleep().
  void sleep();

 private:
  std::chrono::nanoseconds slept_{0};
};

}  // namespace orb
