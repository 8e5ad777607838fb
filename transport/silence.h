#pragma once

#include <algorithm>
#include <chrono>

namespace orb {

/// The pauses between looks at a line while one reply is waited for.
///
/// A reply that is nearly there is seen at once: the first pauses only give way to other threads,
/// the serial driver's among them where there is one core. After them come sleeps, each a fixed
/// share of the time slept so far: a reply that takes long is seen late by a small part of its
/// delay, and a line that stays silent costs next to no processor. Bytes that are not the reply
/// start nothing anew, so that a line that is never quiet costs no more. The clock is never read.
class Silence {
 public:
  /// How long to sleep before the next look; zero while giving way is enough.
  constexpr std::chrono::nanoseconds nextSleep() const {
    using std::chrono::microseconds;
    using std::chrono::milliseconds;
    constexpr int kTimesToGiveWay = 48;
    constexpr microseconds kShortest(400);
    constexpr milliseconds kLongest(4);
    constexpr milliseconds kLongestWhenIdle(12);
    constexpr int kShare = 12;

    if (timesGivenWay_ < kTimesToGiveWay) {
      return std::chrono::nanoseconds::zero();
    }
    if (slept_ >= std::chrono::seconds(1)) {
      return kLongestWhenIdle;
    }
    return std::clamp<std::chrono::nanoseconds>(slept_ / kShare, kShortest, kLongest);
  }

  /// Lets the time until the next look pass.
  void pause();

 private:
  int timesGivenWay_ = 0;
  std::chrono::nanoseconds slept_{0};
};

}  // namespace orb
